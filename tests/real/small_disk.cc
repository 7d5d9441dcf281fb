#include "real/small_disk.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace corvane_test {
namespace {

int Mount(const char* what, const std::string& at, const char* type,
          unsigned long flags, const std::string& options = "") {
  return mount(what, at.c_str(), type, flags, options.c_str()) == 0 ? 0 : errno;
}

void Tell(const char* file, const std::string& text) {
  std::ofstream(file) << text;
}

// Root inside, this user outside.
bool EnterAsOwnRoot() {
  const std::string user = std::to_string(geteuid());
  const std::string group = std::to_string(getegid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  Tell("/proc/self/setgroups", "deny");
  Tell("/proc/self/uid_map", "0 " + user + " 1");
  Tell("/proc/self/gid_map", "0 " + group + " 1");
  return true;
}

}  // namespace

void EnterOwnMounts() {
  if (unshare(CLONE_NEWNS) == 0 || EnterAsOwnRoot()) {
    Mount("none", "/", nullptr, MS_REC | MS_PRIVATE);
  }
}

SmallDisk::SmallDisk(const std::string& at) : at_(at) {
  mkdir(at_.c_str(), 0755);
  const std::string options =
      "size=" + std::to_string(kSize) + ",nr_inodes=" + std::to_string(kInodes);
  const int errnum = Mount("corvane_test", at_, "tmpfs", 0, options);
  if (errnum != 0) {
    refusal_ =
        std::string("mounting a file system is refused: ") + strerror(errnum);
  }
}

SmallDisk::~SmallDisk() {
  if (!refusal_.empty()) return;
  Detach();
  if (!second_.empty()) umount2(second_.c_str(), MNT_DETACH);
}

void SmallDisk::Fill(const std::string& name, size_t size) const {
  std::ofstream file(Path(name), std::ios::binary);
  file << std::string(size, 'x');
}

int SmallDisk::Remount(bool read_only) const {
  unsigned long how = MS_REMOUNT;
  if (read_only) how |= MS_RDONLY;
  return Mount(nullptr, at_, nullptr, how);
}

int SmallDisk::ShowAlsoAt(const std::string& folder) {
  second_ = folder;
  mkdir(folder.c_str(), 0755);
  return Mount(at_.c_str(), folder, nullptr, MS_BIND);
}

// A view is bound first and restricted then: one call doesn't do both.
int SmallDisk::CoverReadOnly() const {
  const int errnum = Mount(at_.c_str(), at_, nullptr, MS_BIND);
  if (errnum != 0) return errnum;
  return Mount(nullptr, at_, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY);
}

int SmallDisk::Detach() const {
  return umount2(at_.c_str(), MNT_DETACH) == 0 ? 0 : errno;
}

int SmallDisk::BringBack() const {
  return Mount(second_.c_str(), at_, nullptr, MS_MOVE);
}

}  // namespace corvane_test
