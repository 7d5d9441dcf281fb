#ifndef CORVANE_FLUTTER_LINUX_FL_VALUE_H_
#define CORVANE_FLUTTER_LINUX_FL_VALUE_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <glib-object.h>
#include <gmodule.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

G_BEGIN_DECLS

/*
 * FlValue: one value of the kinds that cross a channel. It is reference
 * counted, but the count is not atomic: a value and all that it contains stay
 * on one thread. Asking a value for the content of another type logs a
 * critical and returns 0, false or NULL; so does a NULL value.
 */
typedef struct _FlValue FlValue;

/* The order is part of the binary interface. */
typedef enum {
  FL_VALUE_TYPE_NULL,
  FL_VALUE_TYPE_BOOL,
  FL_VALUE_TYPE_INT,
  FL_VALUE_TYPE_FLOAT,
  FL_VALUE_TYPE_STRING,
  FL_VALUE_TYPE_UINT8_LIST,
  FL_VALUE_TYPE_INT32_LIST,
  FL_VALUE_TYPE_INT64_LIST,
  FL_VALUE_TYPE_FLOAT_LIST,
  FL_VALUE_TYPE_LIST,
  FL_VALUE_TYPE_MAP,
  FL_VALUE_TYPE_FLOAT32_LIST,
  FL_VALUE_TYPE_CUSTOM
} FlValueType;

/* Constructors: each returns a new reference and copies what it is given. */
G_MODULE_EXPORT
FlValue* fl_value_new_null(void);
G_MODULE_EXPORT
FlValue* fl_value_new_bool(bool value);
G_MODULE_EXPORT
FlValue* fl_value_new_int(int64_t value);
G_MODULE_EXPORT
FlValue* fl_value_new_float(double value);

/* Text is taken as UTF-8 unchecked and ends at its first NUL. */
G_MODULE_EXPORT
FlValue* fl_value_new_string(const gchar* value);
G_MODULE_EXPORT
FlValue* fl_value_new_string_sized(const gchar* value, size_t value_length);

/* Lengths count elements; the data may be NULL when the length is 0. */
G_MODULE_EXPORT
FlValue* fl_value_new_uint8_list(const uint8_t* value, size_t value_length);
G_MODULE_EXPORT
FlValue* fl_value_new_uint8_list_from_bytes(GBytes* value);
G_MODULE_EXPORT
FlValue* fl_value_new_int32_list(const int32_t* value, size_t value_length);
G_MODULE_EXPORT
FlValue* fl_value_new_int64_list(const int64_t* value, size_t value_length);
G_MODULE_EXPORT
FlValue* fl_value_new_float32_list(const float* value, size_t value_length);
G_MODULE_EXPORT
FlValue* fl_value_new_float_list(const double* value, size_t value_length);

G_MODULE_EXPORT
FlValue* fl_value_new_list(void);

/* A list of strings from a NULL-terminated array. */
G_MODULE_EXPORT
FlValue* fl_value_new_list_from_strv(const gchar* const* value);

G_MODULE_EXPORT
FlValue* fl_value_new_map(void);

/*
 * A value that only a codec of one's own can send. `type` means what that
 * codec wants it to mean; `destroy_notify` (or NULL) gets `value` when the
 * last reference goes. The object forms keep a reference on `object`, the
 * `_take` form the caller's.
 */
G_MODULE_EXPORT
FlValue* fl_value_new_custom(int type, gconstpointer value,
                             GDestroyNotify destroy_notify);
G_MODULE_EXPORT
FlValue* fl_value_new_custom_object(int type, GObject* object);
G_MODULE_EXPORT
FlValue* fl_value_new_custom_object_take(int type, GObject* object);

/* Adds a reference and returns `value`. */
G_MODULE_EXPORT
FlValue* fl_value_ref(FlValue* value);

/* Drops a reference; the last one frees the value and lets go its content. */
G_MODULE_EXPORT
void fl_value_unref(FlValue* value);

G_MODULE_EXPORT
FlValueType fl_value_get_type(FlValue* value);

/*
 * Same type and same content. Maps compare without regard to order, a NaN
 * equals nothing, and neither does a custom value, not even itself.
 */
G_MODULE_EXPORT
bool fl_value_equal(FlValue* a, FlValue* b);

/* Appends to a list. The `_take` form consumes the reference on `child`. */
G_MODULE_EXPORT
void fl_value_append(FlValue* value, FlValue* child);
G_MODULE_EXPORT
void fl_value_append_take(FlValue* value, FlValue* child);

/*
 * Set an entry of a map, which keeps the order of insertion. An equal key that
 * is there already is replaced at its place, key object and value both. The
 * `_take` forms consume the references on the child and on an FlValue key.
 */
G_MODULE_EXPORT
void fl_value_set(FlValue* value, FlValue* key, FlValue* child_value);
G_MODULE_EXPORT
void fl_value_set_take(FlValue* value, FlValue* key, FlValue* child_value);
G_MODULE_EXPORT
void fl_value_set_string(FlValue* value, const gchar* key,
                         FlValue* child_value);
G_MODULE_EXPORT
void fl_value_set_string_take(FlValue* value, const gchar* key,
                              FlValue* child_value);

G_MODULE_EXPORT
bool fl_value_get_bool(FlValue* value);
G_MODULE_EXPORT
int64_t fl_value_get_int(FlValue* value);
G_MODULE_EXPORT
double fl_value_get_float(FlValue* value);

/*
 * Borrowed content, valid while the value lives. A string ends with NUL; an
 * empty typed list may give NULL (an empty Uint8List does).
 */
G_MODULE_EXPORT
const gchar* fl_value_get_string(FlValue* value);
G_MODULE_EXPORT
const uint8_t* fl_value_get_uint8_list(FlValue* value);
G_MODULE_EXPORT
const int32_t* fl_value_get_int32_list(FlValue* value);
G_MODULE_EXPORT
const int64_t* fl_value_get_int64_list(FlValue* value);
G_MODULE_EXPORT
const float* fl_value_get_float32_list(FlValue* value);
G_MODULE_EXPORT
const double* fl_value_get_float_list(FlValue* value);

/*
 * Elements of a list or typed list, entries of a map; a critical and 0 for
 * anything else, strings included.
 */
G_MODULE_EXPORT
size_t fl_value_get_length(FlValue* value);

/* Borrowed. `index` must be below the length: it is not checked. */
G_MODULE_EXPORT
FlValue* fl_value_get_list_value(FlValue* value, size_t index);
G_MODULE_EXPORT
FlValue* fl_value_get_map_key(FlValue* value, size_t index);
G_MODULE_EXPORT
FlValue* fl_value_get_map_value(FlValue* value, size_t index);

/* The value under a key of a map: borrowed, NULL when there is none. */
G_MODULE_EXPORT
FlValue* fl_value_lookup(FlValue* value, FlValue* key);
G_MODULE_EXPORT
FlValue* fl_value_lookup_string(FlValue* value, const gchar* key);

G_MODULE_EXPORT
int fl_value_get_custom_type(FlValue* value);

/* Both borrowed. */
G_MODULE_EXPORT
gconstpointer fl_value_get_custom_value(FlValue* value);
G_MODULE_EXPORT
GObject* fl_value_get_custom_value_object(FlValue* value);

/*
 * A text for people, such as {name: take 1, gain: 0.5}; free it with g_free.
 * Strings are not quoted, floats have at least one decimal.
 */
G_MODULE_EXPORT
gchar* fl_value_to_string(FlValue* value);

G_DEFINE_AUTOPTR_CLEANUP_FUNC(FlValue, fl_value_unref)

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_VALUE_H_ */
