#pragma once

#include "interfaces/TarvoVideoTransform.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarvo::apps::video {

/// How a property gets to a value from the one that it was told before.
enum class Easing {
    easeInOut, ///< slowly off and slowly on: 3u² − 2u³ of the way at the share u of the time
    linear,
    hold ///< it stays as it was and jumps at the end
};

/// A value that a property has at a time.
struct Move {
    std::int64_t time = 0; ///< units of 100 ns
    double value = 0.0;
    Easing easing = Easing::easeInOut;
};

/// Properties of the transform over time.
class CMoves {
public:
    /// What is to be put for a property by its option's name.
    using Value = std::pair<std::string_view, double>;

    /// Reads a text with a move on each line: time, property, value and perhaps the easing. `file` is for
    /// messages. Throws UsageError, which names file and line.
    static CMoves parse(std::string_view text, const std::string& file);

    bool empty() const { return m_tracks.empty(); }
    /// Whether a property of the custom view's virtual camera moves.
    bool moveVirtualCamera() const;

    /// The values of all properties at a time, in the order in which they are to be put; one whose first move
    /// is still to come has none.
    std::vector<Value> at(std::int64_t time) const;

private:
    struct Track {
        std::size_t property;    ///< number in the table of properties
        std::vector<Move> moves; ///< by time, no two at once
    };

    std::vector<Track> m_tracks; ///< in the table's order
};

/// Reads moves from a file. Throws UsageError, FileError, std::bad_alloc.
CMoves readMoves(const std::filesystem::path& path);

/// Puts moving properties when their values change.
class CMover {
public:
    CMover(const CMoves& moves, IDewarpingTransform& transform) : m_moves(moves), m_transform(transform) {}

    /// Puts what changed up to that time. Throws HostError.
    void moveTo(std::int64_t time);

private:
    const CMoves& m_moves;
    IDewarpingTransform& m_transform;
    std::vector<CMoves::Value> m_last;
};

} // namespace tarvo::apps::video
