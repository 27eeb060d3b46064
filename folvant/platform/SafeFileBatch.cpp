#include "folvant/platform/SafeFileBatch.h"

#include <fcntl.h>
#include <sys/stat.h>
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

FileIdentity IdentityFromStat(const struct stat& st) {
  return {static_cast<std::uint64_t>(st.st_ino), static_cast<std::uint64_t>(st.st_size),
          static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec};
}

}  // namespace

std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return std::nullopt;
  return IdentityFromStat(st);
}

SafeFileBatch::~SafeFileBatch() {
  std::error_code ignored;
  for (const Staged& staged : staged_) std::filesystem::remove(staged.temporary, ignored);
}

bool SafeFileBatch::Stage(const std::filesystem::path& path, std::string_view bytes,
                          std::string& error, FileIdentity* identity, bool backup) {
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
  struct stat st {};
  if (::fsync(fd) != 0 || ::fstat(fd, &st) != 0 || ::close(fd) != 0) {
    error = Describe(temporary, errno);
    ::unlink(temporary.c_str());
    return false;
  }
  if (identity != nullptr) *identity = IdentityFromStat(st);
  staged_.push_back({path, std::move(temporary), backup});
  return true;
}

bool SafeFileBatch::Commit(std::string& error) {
  for (const Staged& staged : staged_) {
    std::filesystem::path backup = staged.path;
    backup += ".bak";
    // The old file becomes the backup by a hard link renamed over the old backup, so that both
    // `path` and a backup exist at every moment.
    if (staged.backup && ::access(staged.path.c_str(), F_OK) == 0) {
      std::filesystem::path link = backup;
      link += ".new";
      ::unlink(link.c_str());
      if (::link(staged.path.c_str(), link.c_str()) != 0 ||
          ::rename(link.c_str(), backup.c_str()) != 0) {
        error = Describe(backup, errno);
        ::unlink(link.c_str());
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
