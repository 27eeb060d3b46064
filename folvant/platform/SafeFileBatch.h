#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace folvant::platform {

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
  bool Stage(const std::filesystem::path& path, std::string_view bytes, std::string& error);
  // Moves every staged file into place, keeping the previous versions as backups.
  bool Commit(std::string& error);

 private:
  struct Staged {
    std::filesystem::path path;
    std::filesystem::path temporary;
  };
  std::vector<Staged> staged_;
};

}  // namespace folvant::platform
