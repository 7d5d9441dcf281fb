// The inside of FlValue, for the parts of its implementation alone.
#ifndef CORVANE_EMBEDDING_FL_VALUE_PRIVATE_H_
#define CORVANE_EMBEDDING_FL_VALUE_PRIVATE_H_

#include <flutter_linux/flutter_linux.h>

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace embedding {

struct ValueUnref {
  void operator()(FlValue* value) const { fl_value_unref(value); }
};

// One owned reference.
using ValuePtr = std::unique_ptr<FlValue, ValueUnref>;

using List = std::vector<ValuePtr>;

// A vector rather than a tree: it keeps the order of insertion.
using Map = std::vector<std::pair<ValuePtr, ValuePtr>>;

struct Custom {
  int type;
  // Not a unique_ptr: the notify runs for a NULL pointer as well.
  void* content;
  GDestroyNotify notify;

  Custom(int type, void* content, GDestroyNotify notify)
      : type(type), content(content), notify(notify) {}
  Custom(const Custom&) = delete;
  Custom& operator=(const Custom&) = delete;
  ~Custom() {
    if (notify != nullptr) notify(content);
  }
};

// The alternatives stand in the order of FlValueType: the index is the type.
using Content = std::variant<std::monostate, bool, int64_t, double, std::string,
                             std::vector<uint8_t>, std::vector<int32_t>,
                             std::vector<int64_t>, std::vector<double>, List,
                             Map, std::vector<float>, Custom>;

static_assert(std::variant_size_v<Content> == FL_VALUE_TYPE_CUSTOM + 1);

template <FlValueType kType>
using ContentOf = std::variant_alternative_t<kType, Content>;

}  // namespace embedding

struct _FlValue {
  template <typename... Args>
  explicit _FlValue(Args&&... args) : content(std::forward<Args>(args)...) {}

  FlValueType type() const { return static_cast<FlValueType>(content.index()); }

  embedding::Content content;
  int ref_count = 1;
};

namespace embedding {

// A new value of the given type; the arguments are its content's.
template <FlValueType kType, typename... Args>
FlValue* new_value(Args&&... args) {
  return new FlValue(std::in_place_index<kType>, std::forward<Args>(args)...);
}

// The content as that type's, or NULL: for a NULL value or another type.
template <FlValueType kType>
ContentOf<kType>* content_of(FlValue* value) {
  return value == nullptr ? nullptr : std::get_if<kType>(&value->content);
}

inline ValuePtr new_reference(FlValue* value) {
  return ValuePtr(fl_value_ref(value));
}

}  // namespace embedding

#endif  // CORVANE_EMBEDDING_FL_VALUE_PRIVATE_H_
