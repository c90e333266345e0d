#pragma once

#include <string>

namespace loomkit::test {

/// A folder of a test; gone with the object.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string path() const { return path_; }
    std::string operator/(const std::string& item) const { return path_ + "/" + item; }

private:
    std::string path_;
};

/// Makes the folders above the file, too.
void writeText(const std::string& path, const std::string& text);
/// "" where there is no file.
std::string readText(const std::string& path);

}  // namespace loomkit::test
