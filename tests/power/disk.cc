// A disk whose power can be cut afterwards: a file system in user space with
// one file, `disk`, for a loop device to stand on. Every write and every flush
// that the block layer sends goes into a journal, in the order in which it
// came and with its times.
//
//   power_disk IMAGE JOURNAL FOLDER
//
// shows IMAGE as FOLDER/disk, says "ready" and stays until it is unmounted. The
// mounts around it must be private.
#define FUSE_USE_VERSION 31
#include <fuse.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "power/journal.h"

namespace corvane_test {
namespace {

constexpr char kDisk[] = "/disk";

struct Server {
  Journal journal;
  const char* folder;
};

Server& server() {
  return *static_cast<Server*>(fuse_get_context()->private_data);
}

Journal& journal() { return server().journal; }

// Whoever is the last in a mount namespace unmounts, as it ends, what is
// mounted there. Were it this process, it would wait for answers of its own. So
// it moves to a namespace of its own, from which it takes the folder again: its
// end comes when the folder is unmounted elsewhere.
void leave_mounts() {
  if (unshare(CLONE_NEWNS) == 0 && umount2(server().folder, MNT_DETACH) == 0) {
    return;
  }
  std::perror("leaving the mounts");
  std::exit(EXIT_FAILURE);
}

void* say_ready(fuse_conn_info*, fuse_config*) {
  leave_mounts();
  std::puts("ready");
  std::fflush(stdout);
  return &server();
}

int look(const char* path, struct stat* out, fuse_file_info*) {
  if (std::strcmp(path, "/") == 0) {
    out->st_mode = S_IFDIR | 0700;
    out->st_nlink = 2;
    return 0;
  }
  if (std::strcmp(path, kDisk) != 0) return -ENOENT;
  out->st_mode = S_IFREG | 0600;
  out->st_nlink = 1;
  out->st_size = journal().size();
  return 0;
}

// Past the page cache: what the loop device sends arrives as it was sent.
int open_disk(const char* path, fuse_file_info* file) {
  if (std::strcmp(path, kDisk) != 0) return -ENOENT;
  file->direct_io = 1;
  return 0;
}

int read_disk(const char*, char* out, size_t size, off_t offset,
              fuse_file_info*) {
  const int64_t left = std::max<int64_t>(journal().size() - offset, 0);
  const size_t there = std::min(size, static_cast<size_t>(left));
  const int errnum = journal().Read(out, there, offset);
  return errnum == 0 ? static_cast<int>(there) : -errnum;
}

int write_disk(const char*, const char* data, size_t size, off_t offset,
               fuse_file_info*) {
  const int errnum = journal().Write(data, size, offset);
  return errnum == 0 ? static_cast<int>(size) : -errnum;
}

int flush_disk(const char*, int, fuse_file_info*) { return -journal().Flush(); }

// One thread serves: the journal's order is the disk's.
int serve(Server* server, char* folder) {
  fuse_operations operations = {};
  operations.init = say_ready;
  operations.getattr = look;
  operations.open = open_disk;
  operations.read = read_disk;
  operations.write = write_disk;
  operations.fsync = flush_disk;
  char words[][16] = {"power_disk", "-f", "-s"};
  char* arguments[] = {words[0], words[1], words[2], folder, nullptr};
  const int count = static_cast<int>(std::size(arguments)) - 1;
  return fuse_main(count, arguments, &operations, server);
}

}  // namespace
}  // namespace corvane_test

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("Usage: power_disk IMAGE JOURNAL FOLDER\n", stderr);
    return 2;
  }
  // Memory that is freed by writing to this disk is nothing to wait for here.
  // Where that can't be said, it works without until memory is short.
  prctl(PR_SET_IO_FLUSHER, 1, 0, 0, 0);
  corvane_test::Server server = {{argv[1], argv[2]}, argv[3]};
  return corvane_test::serve(&server, argv[3]);
}
