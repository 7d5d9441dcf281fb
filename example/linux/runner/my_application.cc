#include "my_application.h"

#include <flutter_linux/flutter_linux.h>

#include "flutter/generated_plugin_registrant.h"

struct _MyApplication {
  GtkApplication parent_instance;

  char** dart_arguments;  // owned; the command line without the program's name
};

G_DEFINE_TYPE(MyApplication, my_application, GTK_TYPE_APPLICATION)

static FlView* new_view(MyApplication* self) {
  g_autoptr(FlDartProject) project = fl_dart_project_new();
  fl_dart_project_set_dart_entrypoint_arguments(project, self->dart_arguments);
  return fl_view_new(project);
}

static void my_application_activate(GApplication* application) {
  GtkWindow* window =
      GTK_WINDOW(gtk_application_window_new(GTK_APPLICATION(application)));
  gtk_window_set_title(window, "Corvane example");
  gtk_window_set_default_size(window, 900, 720);
  gtk_widget_show(GTK_WIDGET(window));

  FlView* view = new_view(MY_APPLICATION(application));
  gtk_widget_show(GTK_WIDGET(view));
  gtk_container_add(GTK_CONTAINER(window), GTK_WIDGET(view));
  fl_register_plugins(FL_PLUGIN_REGISTRY(view));
  gtk_widget_grab_focus(GTK_WIDGET(view));
}

// Every argument is Dart's; GTK would refuse those that it doesn't know.
static gboolean my_application_local_command_line(GApplication* application,
                                                  gchar*** arguments,
                                                  int* exit_status) {
  MyApplication* self = MY_APPLICATION(application);
  g_strfreev(self->dart_arguments);
  self->dart_arguments = g_strdupv(*arguments + 1);

  g_autoptr(GError) error = nullptr;
  *exit_status = 0;
  if (g_application_register(application, nullptr, &error)) {
    g_application_activate(application);
  } else {
    g_warning("Failed to register: %s", error->message);
    *exit_status = 1;
  }
  return TRUE;
}

static void my_application_dispose(GObject* object) {
  g_clear_pointer(&MY_APPLICATION(object)->dart_arguments, g_strfreev);
  G_OBJECT_CLASS(my_application_parent_class)->dispose(object);
}

static void my_application_class_init(MyApplicationClass* klass) {
  G_APPLICATION_CLASS(klass)->activate = my_application_activate;
  G_APPLICATION_CLASS(klass)->local_command_line =
      my_application_local_command_line;
  G_OBJECT_CLASS(klass)->dispose = my_application_dispose;
}

static void my_application_init(MyApplication* /*self*/) {}

MyApplication* my_application_new() {
  // The desktop finds the application's own entry, and its icon, by this name.
  g_set_prgname(APPLICATION_ID);

  return MY_APPLICATION(g_object_new(my_application_get_type(),
                                     "application-id", APPLICATION_ID, "flags",
                                     G_APPLICATION_NON_UNIQUE, nullptr));
}
