// What the two units that compile the public header export to the tests.
#ifndef CORVANE_TESTS_CHANNEL_PUBLIC_HEADER_H_
#define CORVANE_TESTS_CHANNEL_PUBLIC_HEADER_H_

#include <glib-object.h>

G_BEGIN_DECLS

GType plugin_type_seen_from_c(void);
GType plugin_type_seen_from_cxx14(void);

G_END_DECLS

#endif  // CORVANE_TESTS_CHANNEL_PUBLIC_HEADER_H_
