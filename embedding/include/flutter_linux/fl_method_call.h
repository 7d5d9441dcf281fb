#ifndef CORVANE_FLUTTER_LINUX_FL_METHOD_CALL_H_
#define CORVANE_FLUTTER_LINUX_FL_METHOD_CALL_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_method_response.h>
#include <flutter_linux/fl_value.h>
#include <gio/gio.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

/*
 * FlMethodCall: one call that arrived on a method channel. It keeps the
 * channel, the arguments and the way back alive, so a handler may take a
 * reference and answer later, once. Like all else it belongs on the main
 * thread, the release of its last reference included.
 */
G_MODULE_EXPORT
G_DECLARE_FINAL_TYPE(FlMethodCall, fl_method_call, FL, METHOD_CALL, GObject)

/* Both borrowed; absent arguments are a null value. */
G_MODULE_EXPORT
const gchar* fl_method_call_get_name(FlMethodCall* method_call);
G_MODULE_EXPORT
FlValue* fl_method_call_get_args(FlMethodCall* method_call);

/*
 * Send the answer. FALSE on failure: then `error` is set to an error that the
 * caller owns, but it may also stay NULL (a second answer, which is a mistake
 * of the caller's and logs a critical). With the real library the error of
 * fl_method_call_respond() is freed already, that of the others is sound.
 */
G_MODULE_EXPORT
gboolean fl_method_call_respond(FlMethodCall* method_call,
                                FlMethodResponse* response, GError** error);
G_MODULE_EXPORT
gboolean fl_method_call_respond_success(FlMethodCall* method_call,
                                        FlValue* result, GError** error);
G_MODULE_EXPORT
gboolean fl_method_call_respond_error(FlMethodCall* method_call,
                                      const gchar* code, const gchar* message,
                                      FlValue* details, GError** error);
G_MODULE_EXPORT
gboolean fl_method_call_respond_not_implemented(FlMethodCall* method_call,
                                                GError** error);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_METHOD_CALL_H_ */
