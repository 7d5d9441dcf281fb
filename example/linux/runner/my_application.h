// The desktop's side of the example: one window that shows the Flutter view.
#ifndef FLUTTER_MY_APPLICATION_H_
#define FLUTTER_MY_APPLICATION_H_

#include <gtk/gtk.h>

G_DECLARE_FINAL_TYPE(MyApplication, my_application, MY, APPLICATION,
                     GtkApplication)

// Transfer full.
MyApplication* my_application_new();

#endif  // FLUTTER_MY_APPLICATION_H_
