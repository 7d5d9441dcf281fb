#ifndef CORVANE_FLUTTER_LINUX_FL_METHOD_RESPONSE_H_
#define CORVANE_FLUTTER_LINUX_FL_METHOD_RESPONSE_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_value.h>
#include <gio/gio.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

/* What fl_method_response_get_result() fails with. */
#define FL_METHOD_RESPONSE_ERROR fl_method_response_error_quark()

typedef enum {
  FL_METHOD_RESPONSE_ERROR_FAILED,         /* No known kind of response. */
  FL_METHOD_RESPONSE_ERROR_REMOTE_ERROR,   /* The method failed. */
  FL_METHOD_RESPONSE_ERROR_NOT_IMPLEMENTED /* There is no such method. */
} FlMethodResponseError;

G_MODULE_EXPORT
GQuark fl_method_response_error_quark(void) G_GNUC_CONST;

/* FlMethodResponse: the outcome of a method call, one of the three below. */
G_MODULE_EXPORT
G_DECLARE_DERIVABLE_TYPE(FlMethodResponse, fl_method_response, FL,
                         METHOD_RESPONSE, GObject)

struct _FlMethodResponseClass {
  GObjectClass parent_class;
};

G_MODULE_EXPORT
G_DECLARE_FINAL_TYPE(FlMethodSuccessResponse, fl_method_success_response, FL,
                     METHOD_SUCCESS_RESPONSE, FlMethodResponse)

G_MODULE_EXPORT
G_DECLARE_FINAL_TYPE(FlMethodErrorResponse, fl_method_error_response, FL,
                     METHOD_ERROR_RESPONSE, FlMethodResponse)

G_MODULE_EXPORT
G_DECLARE_FINAL_TYPE(FlMethodNotImplementedResponse,
                     fl_method_not_implemented_response, FL,
                     METHOD_NOT_IMPLEMENTED_RESPONSE, FlMethodResponse)

/*
 * The result of a successful call: borrowed, and NULL without an error when
 * the response was made without one. NULL with `error` set otherwise.
 */
G_MODULE_EXPORT
FlValue* fl_method_response_get_result(FlMethodResponse* response,
                                       GError** error);

/* Transfer full; takes its own reference on `result`, which may be NULL. */
G_MODULE_EXPORT
FlMethodSuccessResponse* fl_method_success_response_new(FlValue* result);

/* Borrowed, may be NULL. */
G_MODULE_EXPORT
FlValue* fl_method_success_response_get_result(
    FlMethodSuccessResponse* response);

/* Transfer full; copies the texts and takes its own reference on `details`.
 * `message` and `details` may be NULL. */
G_MODULE_EXPORT
FlMethodErrorResponse* fl_method_error_response_new(const gchar* code,
                                                    const gchar* message,
                                                    FlValue* details);

/* All borrowed; message and details may be NULL. */
G_MODULE_EXPORT
const gchar* fl_method_error_response_get_code(FlMethodErrorResponse* response);
G_MODULE_EXPORT
const gchar* fl_method_error_response_get_message(
    FlMethodErrorResponse* response);
G_MODULE_EXPORT
FlValue* fl_method_error_response_get_details(FlMethodErrorResponse* response);

/* Transfer full. */
G_MODULE_EXPORT
FlMethodNotImplementedResponse* fl_method_not_implemented_response_new(void);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_METHOD_RESPONSE_H_ */
