// A folder of one test's own under the system's temporary folder, removed
// with its contents at the end. Its name is random and made afresh, so that
// parallel runs (ctest -j, a sanitizer build beside the plain one) never
// share files.
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace brindle::testing_support {

class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    const auto base = std::filesystem::temp_directory_path();
    do {
      path_ = base / ("brindle-" + std::to_string(random()) + "-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  std::string File(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace brindle::testing_support
