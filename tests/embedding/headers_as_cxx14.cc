// The headers ask for no more than applications have: C++14.
#include <flutter_linux/flutter_linux.h>

#include "headers_as.h"

static_assert(__cplusplus == 201402L, "this file is there to be C++14");

size_t headers_work_as_cxx14(void) {
  g_autoptr(FlValue) list = fl_value_new_list();
  fl_value_append_take(list, fl_value_new_bool(true));
  return fl_value_get_length(list);
}
