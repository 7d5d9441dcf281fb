/* The headers are C: a plain C program includes and calls them. */
#include <flutter_linux/flutter_linux.h>

#include "headers_as.h"

size_t headers_work_as_c(void) {
  g_autoptr(FlValue) list = fl_value_new_list();
  fl_value_append_take(list, fl_value_new_bool(true));
  return fl_value_get_length(list);
}
