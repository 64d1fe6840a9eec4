#pragma once

#include "render/Picture.h"

namespace tarvo::bench {

/// Somebody who does the work of a row; made ready by its constructor, so that a frame costs what it costs in
/// a stream. Every method may throw std::exception.
class IContender {
public:
    virtual ~IContender() = default;

    /// The whole work of a frame, from an input in memory to an output in memory. Inputs take turns with the
    /// frame's number, and a view that moves is where `sweepDegrees` of it says.
    virtual void frame(int number) = 0;

    /// What the last frame gave; not measured.
    virtual render::Picture picture() const = 0;
};

} // namespace tarvo::bench
