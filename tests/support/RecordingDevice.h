#pragma once

#include "render/RenderDevice.h"

#include <array>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace tarvo::tests {

/// What a renderer asks of its device.
enum class Verb {
    isAvailable,
    open,
    openStates,
    geometry,
    overviewMarker,
    prepare,
    releaseProgram,
    lookup,
    releaseLookup,
    upload,
    clear,
    draw,
    copy,
    copyBox,
    flush,
    readBack,
    close,
};

/// One call as a plain value; what a verb does not use keeps its default.
struct RecordedCall {
    Verb verb = Verb::flush;
    std::optional<render::ShaderProgram> program{};         ///< draw, prepare
    render::Surface from = render::Surface::none;           ///< copies
    render::Surface to = render::Surface::none;             ///< copies, clear, upload; draw: the target
    render::TextureSlots textures{};                        ///< draw
    render::ConstantSlot slot = render::ConstantSlot::none; ///< draw, prepare
    std::vector<std::byte> constants{};                     ///< draw, prepare: the record's bytes
    render::DrawRange range{};                              ///< draw
    bool isBlended = false;                                 ///< draw
    geometry::PixelBox box{};                               ///< copyBox; geometry: the exclude area's
    std::array<float, 4> values{};                          ///< clear: colour; geometry: excludeRect

    friend bool operator==(const RecordedCall&, const RecordedCall&) = default;
};

std::ostream& operator<<(std::ostream& stream, const RecordedCall& call);

/// The rows of one upload.
struct RecordedUpload {
    render::Surface surface = render::Surface::none;
    render::SourceRows rows;                        ///< as handed over
    std::vector<std::vector<std::byte>> contents{}; ///< copies, one a row
};

/// A device that draws nothing and keeps what it was asked for. A verb out of turn, a record of the wrong
/// size or a box outside its surface is a failure of the test.
class CRecordingDevice final : public render::IRenderDevice {
public:
    /// Asked before each verb that has a result; a failure is what the verb then answers.
    std::function<HRESULT(const RecordedCall&)> answer;
    bool isThere = true;
    bool isRecording = true; ///< off: nothing is kept and nothing allocated, `answer` is not asked
    std::set<render::ShaderProgram> missingPrograms;

    std::vector<RecordedCall> calls;
    std::vector<RecordedUpload> uploads;
    std::optional<geometry::ViewVertices> viewVertices;
    std::optional<geometry::OverviewMarkerVertices> markerVertices;
    std::optional<render::ShaderProgram> prepared;
    render::InputFormat input;
    render::OutputFormat output;
    std::size_t drawCount = 0; ///< also while nothing is recorded

    /// What is read back; open() makes it, all zero, with `pitchPadding` bytes behind each row.
    std::vector<std::byte> picture;
    std::size_t pitchPadding = 0;
    std::size_t pitch() const { return static_cast<std::size_t>(output.width) * 4 + pitchPadding; }

    /// Lets one verb fail from now on.
    void fail(Verb verb, HRESULT result);
    std::vector<Verb> verbs() const;
    int count(Verb verb) const;

    bool isAvailable() override;
    HRESULT open(const render::InputFormat& inputFormat, const render::OutputFormat& outputFormat) override;
    HRESULT openStates() override;
    bool isOpen() const override { return m_isOpen; }
    render::DeviceKind kind() const override { return render::DeviceKind::fallback; }
    HRESULT geometry(const geometry::ViewVertices& vertices, const render::ExcludeGeometry& exclude) override;
    HRESULT overviewMarker(const geometry::OverviewMarkerVertices& vertices) override;
    bool hasProgram(render::ShaderProgram program) const override;
    HRESULT prepare(render::ShaderProgram program, render::ConstantSlot slot,
                    std::span<const std::byte> constants) override;
    void releaseProgram() override;
    HRESULT lookup(int width, int height) override;
    void releaseLookup() override;
    HRESULT upload(render::Surface surface, const render::SourceRows& rows) override;
    void clear(render::Surface target, const std::array<float, 4>& colour) override;
    HRESULT draw(const render::Pass& pass) override;
    void copy(render::Surface from, render::Surface to) override;
    void copyBox(render::Surface from, const geometry::PixelBox& box, render::Surface to) override;
    void flush() override;
    HRESULT readBack(render::IMappedRowsVisitor& visitor) override;
    void close() override;

private:
    /// Whether the call is to be recorded.
    bool begins(const char* verb) const;
    HRESULT record(RecordedCall call);

    bool m_isOpen = false;
};

} // namespace tarvo::tests
