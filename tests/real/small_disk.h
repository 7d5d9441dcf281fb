// A file system of a test's own, which can be filled, made read-only and taken
// away. It exists in the mount namespace of this process and its children.
#ifndef CORVANE_TESTS_REAL_SMALL_DISK_H_
#define CORVANE_TESTS_REAL_SMALL_DISK_H_

#include <cstddef>
#include <string>

namespace corvane_test {

// Gives the process mounts of its own, so that none can outlive it or be seen
// outside; for a user who may not, as the root of a user namespace. Call it
// before there are threads. Where the system refuses both, mounting is what
// tells.
void EnterOwnMounts();

class SmallDisk {
 public:
  // What fits on it, all files together; files take whole pages of it.
  static constexpr size_t kSize = 16 * 1024;
  // Of these one is the root's.
  static constexpr int kInodes = 16;

  // Makes the folder `at` and mounts a file system in memory there.
  explicit SmallDisk(const std::string& at);
  ~SmallDisk();
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  // Empty when it is mounted, else why not.
  const std::string& refusal() const { return refusal_; }
  std::string Path(const std::string& name) const { return at_ + "/" + name; }

  // Puts `size` bytes into a new file; by default as many as there is room for.
  void Fill(const std::string& name, size_t size = 2 * kSize) const;
  // Changes what is allowed to all; returns 0 or an errno value.
  int Remount(bool read_only) const;
  // Shows it in a second folder, which is made; returns 0 or an errno value.
  int ShowAlsoAt(const std::string& folder);
  // Covers it with a read-only view of itself; 0 or an errno value.
  int CoverReadOnly() const;
  // Takes the topmost mount away at once, whatever is open in it; 0 or errno.
  int Detach() const;
  // Moves it from the second folder back to its place; 0 or an errno value.
  int BringBack() const;

 private:
  const std::string at_;
  std::string second_;
  std::string refusal_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_REAL_SMALL_DISK_H_
