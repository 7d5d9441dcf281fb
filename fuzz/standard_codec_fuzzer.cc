// The stand-in's decoders on arbitrary bytes: no crash, no memory that the
// bytes do not justify, and what was decoded and encoded decodes to the same.
#include <flutter_linux/flutter_linux.h>

#include <functional>
#include <string>
#include <utility>

#include "embedding/allocations.h"
#include "embedding/handles.h"
#include "fuzzing.h"

namespace corvane_fuzz {
namespace {

// What decoding may ask for in all: something for errors and objects, and for
// each byte the largest that one byte can stand for, a null in a list or map,
// with the growth of its container.
constexpr size_t kFreeBytes = 8192;
constexpr size_t kBytesPerByte = 256;

struct Codecs {
  Owned<FlStandardMessageCodec> standard{fl_standard_message_codec_new()};
  Owned<FlStandardMethodCodec> method{fl_standard_method_codec_new()};

  FlMessageCodec* values() { return FL_MESSAGE_CODEC(standard.get()); }
  FlMethodCodec* methods() { return FL_METHOD_CODEC(method.get()); }
  FlMethodCodecClass* operations() {
    return FL_METHOD_CODEC_GET_CLASS(methods());
  }
};

// One form of message: how it is decoded to something of type T, or to NULL
// with the error set, and how that is encoded again.
template <typename T>
struct Form {
  std::function<Owned<T>(GBytes* message, GError** error)> decode;
  std::function<Owned<GBytes>(T* content, GError** error)> encode;
};

template <typename T>
Owned<T> DecodeWithin(const Form<T>& form, const Octets& message) {
  const Owned<GBytes> bytes = to_bytes(message);
  g_autoptr(GError) error = nullptr;
  size_t allocated;
  Owned<T> content;
  {
    const AllocationWatch watch;
    content = form.decode(bytes.get(), &error);
    allocated = watch.total();
  }
  Require(allocated <= kFreeBytes + kBytesPerByte * message.size(),
          std::to_string(allocated) + " bytes asked for " +
              std::to_string(message.size()));
  Require((content == nullptr) == (error != nullptr),
          "neither content nor an error, or both");
  return content;
}

template <typename T>
Octets Encode(const Form<T>& form, T* content) {
  g_autoptr(GError) error = nullptr;
  const Owned<GBytes> bytes = form.encode(content, &error);
  Require(bytes != nullptr, "what was decoded cannot be encoded");
  return to_octets(bytes.get());
}

// Returns what `message` decodes to, and what that does once more.
template <typename T>
std::pair<Owned<T>, Owned<T>> HoldStable(const Form<T>& form,
                                         const Octets& message) {
  Owned<T> first = DecodeWithin(form, message);
  if (first == nullptr) return {};
  const Octets once = Encode(form, first.get());
  Owned<T> second = DecodeWithin(form, once);
  Require(second != nullptr, "what was encoded cannot be decoded");
  Require(Encode(form, second.get()) == once, "a second encoding differs");
  return {std::move(first), std::move(second)};
}

Form<FlValue> PlainValue(Codecs* codecs) {
  return {[codecs](GBytes* message, GError** error) {
            return Owned<FlValue>(fl_message_codec_decode_message(
                codecs->values(), message, error));
          },
          [codecs](FlValue* value, GError** error) {
            return Owned<GBytes>(fl_message_codec_encode_message(
                codecs->values(), value, error));
          }};
}

// A call as a list of its name and its arguments.
Form<FlValue> MethodCall(Codecs* codecs) {
  return {[codecs](GBytes* message, GError** error) {
            g_autofree gchar* name = nullptr;
            FlValue* args = nullptr;
            if (!codecs->operations()->decode_method_call(
                    codecs->methods(), message, &name, &args, error)) {
              return Owned<FlValue>();
            }
            Owned<FlValue> call(fl_value_new_list());
            fl_value_append_take(call.get(), fl_value_new_string(name));
            fl_value_append_take(call.get(), args);
            return call;
          },
          [codecs](FlValue* call, GError** error) {
            return Owned<GBytes>(codecs->operations()->encode_method_call(
                codecs->methods(),
                fl_value_get_string(fl_value_get_list_value(call, 0)),
                fl_value_get_list_value(call, 1), error));
          }};
}

GBytes* EncodeResponse(Codecs* codecs, FlMethodResponse* response,
                       GError** error) {
  if (FL_IS_METHOD_SUCCESS_RESPONSE(response)) {
    return codecs->operations()->encode_success_envelope(
        codecs->methods(),
        fl_method_success_response_get_result(
            FL_METHOD_SUCCESS_RESPONSE(response)),
        error);
  }
  FlMethodErrorResponse* failure = FL_METHOD_ERROR_RESPONSE(response);
  return codecs->operations()->encode_error_envelope(
      codecs->methods(), fl_method_error_response_get_code(failure),
      fl_method_error_response_get_message(failure),
      fl_method_error_response_get_details(failure), error);
}

Form<FlMethodResponse> Response(Codecs* codecs) {
  return {
      [codecs](GBytes* message, GError** error) {
        return Owned<FlMethodResponse>(codecs->operations()->decode_response(
            codecs->methods(), message, error));
      },
      [codecs](FlMethodResponse* response, GError** error) {
        return Owned<GBytes>(EncodeResponse(codecs, response, error));
      }};
}

// A value that holds a NaN is not equal to itself: the bytes must do then.
void HoldEqual(FlValue* first, FlValue* second) {
  if (first == nullptr || !fl_value_equal(first, first)) return;
  Require(fl_value_equal(first, second), "decoded again it is another value");
  Require(text_of(first) == text_of(second),
          "decoded again it reads otherwise");
}

void EndAtWhatGlibReports(const gchar* /*domain*/, GLogLevelFlags /*level*/,
                          const gchar* message, gpointer /*data*/) {
  Require(false, std::string("GLib reports: ") + message);
}

}  // namespace
}  // namespace corvane_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane_fuzz;
  g_log_set_default_handler(EndAtWhatGlibReports, nullptr);
  static Codecs codecs;
  const Octets message(data, data + size);
  const auto value = HoldStable(PlainValue(&codecs), message);
  HoldEqual(value.first.get(), value.second.get());
  const auto call = HoldStable(MethodCall(&codecs), message);
  HoldEqual(call.first.get(), call.second.get());
  HoldStable(Response(&codecs), message);
  return 0;
}
