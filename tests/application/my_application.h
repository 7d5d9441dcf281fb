// An application as its plugins see it, with no window and no Dart: the
// registry that the generated registrant is given, and the engine's end of the
// channels. Takes the place of the example's own MyApplication.
#ifndef CORVANE_TESTS_APPLICATION_MY_APPLICATION_H_
#define CORVANE_TESTS_APPLICATION_MY_APPLICATION_H_

#include <flutter_linux/flutter_linux.h>

// One object for the registry, each registrar and the messenger.
G_DECLARE_FINAL_TYPE(MyApplication, my_application, MY, APPLICATION, GObject)

// Transfer full. The thread that calls must own the default main context.
MyApplication* my_application_new();

// Calls a method and runs the main context until it is answered. `args` is
// consumed; NULL for none. Transfer full; NULL when nobody handles the channel
// or the method is not implemented.
FlMethodResponse* my_application_call(MyApplication* self, const char* channel,
                                      const char* method, FlValue* args);

// How many events the plugins have sent so far.
int my_application_events(MyApplication* self);

// Drops every handler, as an engine does when it goes down.
void my_application_shut_down(MyApplication* self);

#endif  // CORVANE_TESTS_APPLICATION_MY_APPLICATION_H_
