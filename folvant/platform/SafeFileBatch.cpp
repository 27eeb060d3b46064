#include "folvant/platform/SafeFileBatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace folvant::platform {
namespace {

std::string Describe(const std::filesystem::path& path, int error_number) {
  return path.string() + ": " + std::strerror(error_number);
}

void SyncDirectory(const std::filesystem::path& directory) {
  const int fd = ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY);
  if (fd >= 0) {
    ::fsync(fd);
    ::close(fd);
  }
}

}  // namespace

SafeFileBatch::~SafeFileBatch() {
  std::error_code ignored;
  for (const Staged& staged : staged_) std::filesystem::remove(staged.temporary, ignored);
}

bool SafeFileBatch::Stage(const std::filesystem::path& path, std::string_view bytes,
                          std::string& error) {
  std::filesystem::path temporary = path;
  temporary += ".new";
  const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) {
    error = Describe(temporary, errno);
    return false;
  }
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
    if (n < 0) {
      if (errno == EINTR) continue;
      error = Describe(temporary, errno);
      ::close(fd);
      ::unlink(temporary.c_str());
      return false;
    }
    written += static_cast<std::size_t>(n);
  }
  if (::fsync(fd) != 0 || ::close(fd) != 0) {
    error = Describe(temporary, errno);
    ::unlink(temporary.c_str());
    return false;
  }
  staged_.push_back({path, std::move(temporary)});
  return true;
}

bool SafeFileBatch::Commit(std::string& error) {
  for (const Staged& staged : staged_) {
    std::filesystem::path backup = staged.path;
    backup += ".bak";
    // The old file becomes the backup by a hard link, so that `path` exists at every moment.
    if (::access(staged.path.c_str(), F_OK) == 0) {
      ::unlink(backup.c_str());
      if (::link(staged.path.c_str(), backup.c_str()) != 0) {
        error = Describe(backup, errno);
        return false;
      }
    }
    if (::rename(staged.temporary.c_str(), staged.path.c_str()) != 0) {
      error = Describe(staged.path, errno);
      return false;
    }
    SyncDirectory(staged.path.parent_path());
  }
  staged_.clear();
  return true;
}

}  // namespace folvant::platform
