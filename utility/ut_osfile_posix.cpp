// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <limits>

#include "ut_osfile.h"

namespace {

std::string reason(const std::string& name, const char* what, int error) {
  return name + ": " + what + ": " + std::strerror(error);
}

std::unique_ptr<UT_OSFILE> refuse(UT_OSFILE::fault& why, const std::string& name, const char* what, int error) {
  why.text = reason(name, what, error);
  why.out_of_handles = error == EMFILE || error == ENFILE;
  return nullptr;
}

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// Makes a call again when a signal interrupted it before it did anything.
template <class Call>
auto uninterrupted(Call call) noexcept {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

int open_file(const char* path, int flags) noexcept {
  return uninterrupted([&] { return ::open(path, flags | O_CLOEXEC, 0666); });
}

bool sync_file(int handle) noexcept {
  return uninterrupted([&] { return ::fsync(handle); }) == 0;
}

// Interrupted it closes all the same, and another thread may have a file of this number by then.
bool close_file(int handle) noexcept { return ::close(handle) == 0 || errno == EINTR; }

// Whether the path is a link that the system makes up for what a process has open, as in /proc/self/fd. Reading such a
// link gives a text for people: no name at all for a pipe, and for a file one that would be replaced behind the back of
// everyone who has it open.
bool is_handle_link(const std::string& path) noexcept {
  struct stat link {};
  struct stat made_up {};
  return ::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode) && ::lstat("/proc/self", &made_up) == 0 &&
         link.st_dev == made_up.st_dev;
}

// What a name leads to behind symbolic links, whether or not it exists.
struct destination {
  explicit destination(const std::string& name) : path(name) {
    follow_links();
    exists = ::stat(path.c_str(), &status) == 0;
  }

  bool is_folder() const noexcept { return exists && S_ISDIR(status.st_mode); }
  bool is_stream() const noexcept { return is_handle || (exists && !S_ISREG(status.st_mode) && !is_folder()); }

  std::string path;
  bool is_handle = false;
  bool exists = false;
  struct stat status {};

 private:
  void follow_links() {
    constexpr int most_links = 40;
    char link[PATH_MAX];
    for (int links = 0; links < most_links; ++links) {
      is_handle = is_handle_link(path);
      if (is_handle) return;
      const ssize_t length = ::readlink(path.c_str(), link, sizeof link);
      if (length <= 0 || length == static_cast<ssize_t>(sizeof link)) return;
      path = link[0] == '/' ? std::string() : folder_of(path);
      path.append(link, static_cast<std::size_t>(length));
    }
  }
};

// The number of the handle, of this process, that the path stands for; -1 when it is none of these.
int own_handle(const destination& to) noexcept {
  const char* end = to.path.data() + to.path.size();
  int number = -1;
  const auto [stop, error] = std::from_chars(to.path.data() + to.path.rfind('/') + 1, end, number);
  struct stat open {};
  if (error != std::errc() || stop != end || number < 0 || ::fstat(number, &open) != 0) return -1;
  return open.st_dev == to.status.st_dev && open.st_ino == to.status.st_ino ? number : -1;
}

int connect_to(const std::string& path) noexcept {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  path.copy(address.sun_path, path.size());
  const int handle = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (handle < 0 || ::connect(handle, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return handle;
  const int error = errno;
  close_file(handle);
  errno = error;
  return -1;
}

// A handle of this process is taken as it is: with its place in the file, and appending when it does.
int open_stream(const destination& to) noexcept {
  const int handle = to.is_handle ? own_handle(to) : -1;
  if (handle >= 0) return ::fcntl(handle, F_DUPFD_CLOEXEC, 0);
  if (S_ISSOCK(to.status.st_mode)) return connect_to(to.path);
  return open_file(to.path.c_str(), O_WRONLY | O_NOCTTY | (S_ISREG(to.status.st_mode) ? O_APPEND : 0));
}

// Opens a new file of its own in the target's folder. Its name does not grow with the target's, which
// may already have the greatest length that the system takes.
int create_temporary(const std::string& target, std::filesystem::path& path) {
  static std::atomic<unsigned> counter{0};
  for (int attempt = 0; attempt < 10000; ++attempt) {
    path = folder_of(target) + ".qelmodb-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".tmp";
    const int handle = open_file(path.c_str(), O_WRONLY | O_CREAT | O_EXCL);
    if (handle >= 0 || errno != EEXIST) return handle;
  }
  return -1;
}

void sync_folder(const std::string& folder) noexcept {
  const int handle = open_file(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (handle < 0) return;
  sync_file(handle);  // best effort: some file systems cannot sync a folder
  close_file(handle);
}

int descriptor(std::intptr_t handle) noexcept { return static_cast<int>(handle); }

}  // namespace

std::unique_ptr<UT_OSFILE> UT_OSFILE::open_read(const std::string& name, fault& why) {
  std::unique_ptr<UT_OSFILE> file(new UT_OSFILE(name));
  file->handle_ = open_file(name.c_str(), O_RDONLY);
  if (file->handle_ < 0) return refuse(why, name, "cannot open for reading", errno);
  struct stat status {};
  if (::fstat(descriptor(file->handle_), &status) != 0) return refuse(why, name, "cannot open for reading", errno);
  if (S_ISDIR(status.st_mode)) return refuse(why, name, "cannot open for reading", EISDIR);
  // Files that the system makes up while they are read claim to be empty.
  if (S_ISREG(status.st_mode) && status.st_size > 0) file->size_ = status.st_size;
  return file;
}

bool UT_OSFILE::is_stream(const std::string& name) { return destination(name).is_stream(); }

std::unique_ptr<UT_OSFILE> UT_OSFILE::open_write(const std::string& name, bool replace, fault& why) {
  constexpr const char* what = "cannot open for writing";
  const destination to(name);
  if (to.path.empty()) return refuse(why, name, what, ENOENT);
  if (to.is_folder()) return refuse(why, name, what, EISDIR);
  if (to.exists && !to.is_handle && ::access(to.path.c_str(), W_OK) != 0) return refuse(why, name, what, errno);
  std::unique_ptr<UT_OSFILE> file(new UT_OSFILE(name));
  if (!replace || to.is_stream()) {
    file->handle_ = to.is_stream() ? open_stream(to) : open_file(to.path.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    if (file->handle_ < 0) return refuse(why, name, what, errno);
    return file;
  }
  file->target_ = to.path;
  std::filesystem::path temporary;
  const int handle = create_temporary(to.path, temporary);
  if (handle < 0) return refuse(why, name, what, errno);
  file->handle_ = handle;
  file->temporary_.swap(temporary);
  if (to.exists && ::fchmod(handle, to.status.st_mode & 07777) != 0) return refuse(why, name, what, errno);
  return file;
}

UT_OSFILE::~UT_OSFILE() {
  if (handle_ >= 0) close_file(descriptor(handle_));
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

std::size_t UT_OSFILE::read(void* bytes, std::size_t count) noexcept {
  const ssize_t got = uninterrupted([&] { return ::read(descriptor(handle_), bytes, count); });
  if (got <= 0) return 0;
  read_ += got;
  return static_cast<std::size_t>(got);
}

bool UT_OSFILE::write(const void* bytes, std::size_t count) noexcept {
  const char* from = static_cast<const char*>(bytes);
  while (count != 0) {
    const ssize_t put = uninterrupted([&] { return ::write(descriptor(handle_), from, count); });
    if (put <= 0) {
      if (write_fault_ == 0) write_fault_ = put < 0 ? errno : ENOSPC;
      return false;
    }
    from += put;
    count -= static_cast<std::size_t>(put);
  }
  return true;
}

bool UT_OSFILE::commit(fault& why) {
  const bool in_place = temporary_.empty();
  // A pipe or a device cannot be synced; that is no fault.
  const bool synced =
      sync_file(descriptor(handle_)) || (in_place && (errno == EINVAL || errno == EROFS || errno == ENOTSUP));
  const int sync_error = errno;
  const bool closed = close_file(descriptor(handle_));
  const int error = synced ? errno : sync_error;
  handle_ = -1;
  if (!synced || !closed) {
    refuse(why, name_, "cannot write", error);
    return false;
  }
  if (in_place) return true;
  const std::string folder = folder_of(target_.native());
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
    refuse(why, name_, "cannot replace", errno);
    return false;
  }
  temporary_.clear();
  sync_folder(folder);
  return true;
}

std::string UT_OSFILE::write_error() const {
  return reason(name_, "cannot write", write_fault_ != 0 ? write_fault_ : EIO);
}

std::int64_t UT_OSFILE::bytes_left() const noexcept {
  if (size_ < 0) return std::numeric_limits<std::int64_t>::max();
  return size_ > read_ ? size_ - read_ : 0;
}
