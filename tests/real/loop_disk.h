// A journaling file system in an image file, which can be made to do what such
// systems do after an error of their disk: to take no more writes.
#ifndef CORVANE_TESTS_REAL_LOOP_DISK_H_
#define CORVANE_TESTS_REAL_LOOP_DISK_H_

#include <string>

namespace corvane_test {

class LoopDisk {
 public:
  // Makes the file `image` and mounts it at the folder `at`, made too.
  LoopDisk(const std::string& at, const std::string& image);
  ~LoopDisk();
  LoopDisk(const LoopDisk&) = delete;
  LoopDisk& operator=(const LoopDisk&) = delete;

  // Empty when it is mounted, else why not.
  const std::string& refusal() const { return refusal_; }
  std::string Path(const std::string& name) const { return at_ + "/" + name; }

  // Gives up while files are open; returns 0 or an errno value.
  int GiveUp() const;
  // Mounts it afresh, as after a restart, with what its disk holds. Nothing
  // may be open in it.
  void MountAgain();

 private:
  const std::string at_;
  const std::string image_;
  std::string refusal_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_REAL_LOOP_DISK_H_
