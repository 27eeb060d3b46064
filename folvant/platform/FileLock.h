#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace folvant::platform {

// An advisory lock on a file (flock): shared for readers, exclusive for a writer. The lock is
// held while the object lives. Locks taken through different open files of one process
// exclude each other as they would between processes.
class FileLock {
 public:
  enum class Mode { kShared, kExclusive };

  FileLock() = default;
  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&& other) noexcept;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

  // Takes the lock on `path` (creating the file when missing), trying again until `wait` has
  // passed. nullopt when another holder kept it that long; `error` then says so, or names the
  // system error. A shared lock on a file that cannot be created (a read-only folder) is given
  // without locking anything: nobody can write there either.
  static std::optional<FileLock> Acquire(const std::filesystem::path& path, Mode mode,
                                         std::chrono::milliseconds wait, std::string& error);

  bool held() const { return fd_ >= 0; }

 private:
  explicit FileLock(int fd) : fd_(fd) {}
  int fd_ = -1;
};

}  // namespace folvant::platform
