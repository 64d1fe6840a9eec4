#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

namespace tarvo::tests {

/// A folder of a test's own that goes with the test.
class CTemporaryFolder {
public:
    CTemporaryFolder() {
        std::random_device random;
        std::error_code error;
        // Tests run as processes side by side: whoever creates the folder has it.
        for (int attempt = 0; attempt < 100 && m_path.empty(); ++attempt) {
            const auto path =
                std::filesystem::temp_directory_path() / ("tarvo-test-" + std::to_string(random()));
            if (std::filesystem::create_directory(path, error))
                m_path = path;
        }
        EXPECT_FALSE(m_path.empty()) << error.message();
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    ~CTemporaryFolder() {
        std::error_code ignored;
        if (!m_path.empty())
            std::filesystem::remove_all(m_path, ignored);
    }

    /// The path of a file in it.
    std::string operator/(std::string_view name) const { return (m_path / name).string(); }
    std::string path() const { return m_path.string(); }

    /// How many files and folders lie directly in it.
    std::ptrdiff_t count() const {
        return std::distance(std::filesystem::directory_iterator(m_path),
                             std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path m_path;
};

/// A file's bytes; a test that cannot read it fails.
inline std::string readFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream) << path;
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A text file's lines, which end the same way on every system; empty when there is no such file.
inline std::string readText(const std::string& path) {
    std::ifstream stream(path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeFile(const std::string& path, std::string_view bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(stream.flush()) << path;
}

} // namespace tarvo::tests
