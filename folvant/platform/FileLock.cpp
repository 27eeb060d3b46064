#include "folvant/platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

namespace folvant::platform {

FileLock::FileLock(FileLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = std::exchange(other.fd_, -1);
  }
  return *this;
}

FileLock::~FileLock() {
  if (fd_ >= 0) ::close(fd_);  // closing the file releases the lock
}

std::optional<FileLock> FileLock::Acquire(const std::filesystem::path& path, Mode mode,
                                          std::chrono::milliseconds wait, std::string& error) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) {
    if (mode == Mode::kShared && (errno == EACCES || errno == EROFS)) return FileLock();
    error = path.string() + ": " + std::strerror(errno);
    return std::nullopt;
  }
  const int operation = (mode == Mode::kShared ? LOCK_SH : LOCK_EX) | LOCK_NB;
  const auto deadline = std::chrono::steady_clock::now() + wait;
  for (;;) {
    if (::flock(fd, operation) == 0) return FileLock(fd);
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) {
      error = path.string() + ": " + std::strerror(errno);
      break;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      error.clear();  // held by someone else
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  ::close(fd);
  return std::nullopt;
}

}  // namespace folvant::platform
