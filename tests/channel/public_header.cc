#include "public_header.h"

#include <corvane/corvane_plugin.h>

GType plugin_type_seen_from_cxx14() { return corvane_plugin_get_type(); }
