#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace folvant::platform {

// What tells one version of a file from another: a file replaced by a rename gets a new inode,
// and one written in place a new modification time or size.
struct FileIdentity {
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  // nanoseconds since the epoch
  bool operator==(const FileIdentity&) const = default;
};

// The identity of the file at `path`, or nullopt when there is none.
std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path);

// Writes files so that a failure never leaves a half-written or missing file: each new file
// is written beside the old one and flushed to disk, and only when every file of the batch is
// written are they renamed over the old ones, the old ones kept as "<name>.bak".
class SafeFileBatch {
 public:
  SafeFileBatch() = default;
  ~SafeFileBatch();  // removes temporary files that were never committed
  SafeFileBatch(const SafeFileBatch&) = delete;
  SafeFileBatch& operator=(const SafeFileBatch&) = delete;

  // Writes the bytes to a temporary file beside `path`; false (and `error`) on failure.
  // `identity`, when given, receives the identity that `path` will have once committed.
  // `backup` false: the old file does not become "<name>.bak", which stays as it was (for
  // replacing a file whose old version is not worth keeping).
  bool Stage(const std::filesystem::path& path, std::string_view bytes, std::string& error,
             FileIdentity* identity = nullptr, bool backup = true);
  // Moves every staged file into place in the order staged, keeping the previous versions as
  // backups. Each file is replaced by one rename: a process killed at any moment leaves every
  // file either as it was or as it should be.
  bool Commit(std::string& error);

 private:
  struct Staged {
    std::filesystem::path path;
    std::filesystem::path temporary;
    bool backup;
  };
  std::vector<Staged> staged_;
};

}  // namespace folvant::platform
