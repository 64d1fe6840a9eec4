#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/RegistryFiles.h"
#include "platform/registry/StoredRegistry.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tarvo::platform {

/// Keeps the registry in a file that other processes may read and change at any time.
///
/// A change is made while a lock file beside it is held, on what the file says then, and takes its place at
/// once; so no change of another process is lost and no reader sees half a file. What the reader cannot use -
/// too large, no regular file, no right to read - counts as no file when read, and is not overwritten.
class CFileStore : public IRegistryStore {
public:
    static constexpr std::size_t largestFile = 2 << 20;

    /// `files` is asked at each call.
    explicit CFileStore(std::function<RegistryFiles()> files) : m_files(std::move(files)) {}

    const CRegistryTree& tree() override;
    RegistryError change(const std::function<RegistryError(CRegDocument&)>& edit) override;

private:
    /// Tells one state of a file from another.
    struct Stamp {
        std::string path;
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t size = -1;
        std::int64_t modified = 0; ///< nanoseconds
        std::int64_t changed = 0;  ///< nanoseconds
        /// Whether a later change would certainly show: file times advance in steps.
        bool isSettled = false;

        bool operator==(const Stamp&) const = default;
    };

    static Stamp stampOf(const std::string& path);

    std::function<RegistryFiles()> m_files;
    Stamp m_stamp;
    CRegistryTree m_tree;
};

} // namespace tarvo::platform
