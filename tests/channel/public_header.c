#include "public_header.h"

#include <corvane/corvane_plugin.h>

GType plugin_type_seen_from_c(void) { return corvane_plugin_get_type(); }
