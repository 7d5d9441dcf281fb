// Changes to class and interface tables of GObject types, undone at the end of
// the scope: the only way to make the embedding fail or to count its objects.
#ifndef CORVANE_TESTS_CHANNEL_OVERRIDES_H_
#define CORVANE_TESTS_CHANNEL_OVERRIDES_H_

#include <flutter_linux/flutter_linux.h>

#include <cstddef>
#include <map>
#include <set>

namespace corvane_test {

// Puts another function into a slot.
template <typename Function>
class ScopedOverride {
 public:
  ScopedOverride(Function* slot, Function replacement)
      : slot_(slot), previous_(*slot) {
    *slot = replacement;
  }
  ~ScopedOverride() { *slot_ = previous_; }
  ScopedOverride(const ScopedOverride&) = delete;
  ScopedOverride& operator=(const ScopedOverride&) = delete;

 private:
  Function* slot_;
  Function previous_;
};

// Follows the instances of exactly `type` that are made while it lives. Main
// thread only.
class InstanceCount {
 public:
  explicit InstanceCount(GType type)
      : class_(G_OBJECT_CLASS(g_type_class_ref(type))),
        previous_constructed_(class_->constructed),
        previous_finalize_(class_->finalize),
        constructed_(&class_->constructed, OnConstructed),
        finalize_(&class_->finalize, OnFinalize) {
    Active()[class_] = this;
  }
  ~InstanceCount() {
    Active().erase(class_);
    g_type_class_unref(class_);
  }
  InstanceCount(const InstanceCount&) = delete;
  InstanceCount& operator=(const InstanceCount&) = delete;

  int made() const { return made_; }
  // Of those made.
  size_t alive() const { return alive_.size(); }
  // The instance made last, borrowed; it may be gone.
  GObject* last() const { return last_; }

 private:
  // Class functions get no data of ours, so the class itself is the key.
  static std::map<GObjectClass*, InstanceCount*>& Active() {
    static std::map<GObjectClass*, InstanceCount*> active;
    return active;
  }

  static void OnConstructed(GObject* object) {
    InstanceCount* self = Active().at(G_OBJECT_GET_CLASS(object));
    self->previous_constructed_(object);
    ++self->made_;
    self->alive_.insert(object);
    self->last_ = object;
  }

  static void OnFinalize(GObject* object) {
    InstanceCount* self = Active().at(G_OBJECT_GET_CLASS(object));
    self->alive_.erase(object);
    self->previous_finalize_(object);
  }

  GObjectClass* class_;
  void (*previous_constructed_)(GObject*);
  void (*previous_finalize_)(GObject*);
  ScopedOverride<void (*)(GObject*)> constructed_;
  ScopedOverride<void (*)(GObject*)> finalize_;
  int made_ = 0;
  std::set<GObject*> alive_;
  GObject* last_ = nullptr;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CHANNEL_OVERRIDES_H_
