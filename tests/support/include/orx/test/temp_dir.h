// A folder of a test's own, so that tests leave nothing behind.
#ifndef ORX_TEST_TEMP_DIR_H
#define ORX_TEST_TEMP_DIR_H

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace orx::test {

// A fresh folder under $TMPDIR (or /tmp), removed with everything in it by the destructor unless
// Keep() was called (to look at what a failed test left). Only the process that made it removes
// it, not a forked child that exits. Path() is empty when none could be made.
class TempDir {
  public:
    explicit TempDir(const std::string& prefix = "orx-test") {
        const char* base = getenv("TMPDIR");
        std::string pattern =
            std::string(base != nullptr ? base : "/tmp") + "/" + prefix + "-XXXXXX";
        path_ = mkdtemp(pattern.data()) != nullptr ? pattern : std::string();
    }
    ~TempDir() {
        if (!path_.empty() && !keep_ && getpid() == owner_) {
            std::error_code ignored;
            std::filesystem::remove_all(path_, ignored);
        }
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& Path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }
    void Keep() { keep_ = true; }

  private:
    std::string path_;
    bool keep_ = false;
    pid_t owner_ = getpid();
};

}  // namespace orx::test

#endif  // ORX_TEST_TEMP_DIR_H
