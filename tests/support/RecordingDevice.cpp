#include "tests/support/RecordingDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <utility>

namespace tarvo::tests {

using render::ConstantSlot;
using render::ExcludeGeometry;
using render::InputFormat;
using render::OutputFormat;
using render::ShaderProgram;
using render::SourceRows;
using render::Surface;

namespace {

constexpr std::array verbNames{
    "isAvailable",    "open",    "openStates",    "geometry", "overviewMarker", "prepare",
    "releaseProgram", "lookup",  "releaseLookup", "upload",   "clear",          "draw",
    "copy",           "copyBox", "flush",         "readBack", "close"};

std::vector<std::byte> bytesOf(std::span<const std::byte> bytes) {
    return {bytes.begin(), bytes.end()};
}

/// The sizes that the programs read.
void expectRecordOf(ConstantSlot slot, std::span<const std::byte> record) {
    switch (slot) {
    case ConstantSlot::dewarp:
        EXPECT_EQ(record.size(), 80U);
        break;
    case ConstantSlot::exclude:
    case ConstantSlot::width:
        EXPECT_EQ(record.size(), 16U);
        break;
    case ConstantSlot::custom:
        EXPECT_TRUE(record.size() == 64 || record.size() == 96) << record.size();
        break;
    case ConstantSlot::none:
        EXPECT_EQ(record.size(), 0U);
        break;
    }
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const RecordedCall& call) {
    stream << verbNames[static_cast<std::size_t>(call.verb)];
    if (call.program) {
        stream << " " << render::shaderResource(*call.program).sourceName;
    }
    stream << " " << static_cast<int>(call.from) << "->" << static_cast<int>(call.to) << " t[";
    for (const Surface texture : call.textures) {
        stream << static_cast<int>(texture) << " ";
    }
    stream << "] b" << static_cast<int>(call.slot) << " (";
    for (const std::byte byte : call.constants) {
        stream << std::to_integer<int>(byte) << " ";
    }
    stream << ") source " << static_cast<int>(call.range.source) << " topology "
           << static_cast<int>(call.range.topology) << " first " << call.range.first << " count "
           << call.range.count << " base " << call.range.baseVertex << (call.isBlended ? " blended" : "")
           << " box " << call.box.left << "," << call.box.top << "," << call.box.right << ","
           << call.box.bottom << " values";
    for (const float value : call.values) {
        stream << " " << value;
    }
    return stream;
}

void CRecordingDevice::fail(Verb verb, HRESULT result) {
    answer = [verb, result](const RecordedCall& call) { return call.verb == verb ? result : S_OK; };
}

std::vector<Verb> CRecordingDevice::verbs() const {
    std::vector<Verb> result;
    std::ranges::transform(calls, std::back_inserter(result), &RecordedCall::verb);
    return result;
}

int CRecordingDevice::count(Verb verb) const {
    return static_cast<int>(std::ranges::count(calls, verb, &RecordedCall::verb));
}

bool CRecordingDevice::begins(const char* verb) const {
    EXPECT_TRUE(m_isOpen) << verb << " on a closed device";
    return isRecording;
}

HRESULT CRecordingDevice::record(RecordedCall call) {
    calls.push_back(std::move(call));
    // A copy, since the answer may come from something that looks at the calls, or changes itself.
    const RecordedCall asked = calls.back();
    return answer ? answer(asked) : S_OK;
}

bool CRecordingDevice::isAvailable() {
    record({.verb = Verb::isAvailable});
    return isThere;
}

HRESULT CRecordingDevice::open(const InputFormat& inputFormat, const OutputFormat& outputFormat) {
    m_isOpen = false;
    const HRESULT result = record({.verb = Verb::open});
    if (SUCCEEDED(result)) {
        m_isOpen = true;
        input = inputFormat;
        output = outputFormat;
        picture.assign(pitch() * static_cast<std::size_t>(output.height), std::byte{0});
    }
    return result;
}

HRESULT CRecordingDevice::openStates() {
    return begins("openStates") ? record({.verb = Verb::openStates}) : S_OK;
}

HRESULT CRecordingDevice::geometry(const geometry::ViewVertices& vertices, const ExcludeGeometry& exclude) {
    if (!begins("geometry")) {
        return S_OK;
    }
    RecordedCall call{.verb = Verb::geometry};
    call.box = exclude.box;
    std::ranges::copy(exclude.constants.excludeRect, call.values.begin());
    const HRESULT result = record(std::move(call));
    if (SUCCEEDED(result)) {
        viewVertices = vertices;
    }
    return result;
}

HRESULT CRecordingDevice::overviewMarker(const geometry::OverviewMarkerVertices& vertices) {
    if (!begins("overviewMarker")) {
        return S_OK;
    }
    const HRESULT result = record({.verb = Verb::overviewMarker});
    if (SUCCEEDED(result)) {
        markerVertices = vertices;
    }
    return result;
}

bool CRecordingDevice::hasProgram(ShaderProgram program) const {
    EXPECT_TRUE(m_isOpen) << "hasProgram on a closed device";
    return !missingPrograms.contains(program);
}

HRESULT CRecordingDevice::prepare(ShaderProgram program, ConstantSlot slot,
                                  std::span<const std::byte> constants) {
    if (!begins("prepare")) {
        return S_OK;
    }
    expectRecordOf(slot, constants);
    const HRESULT result =
        record({.verb = Verb::prepare, .program = program, .slot = slot, .constants = bytesOf(constants)});
    prepared = SUCCEEDED(result) ? std::optional(program) : std::nullopt;
    return result;
}

void CRecordingDevice::releaseProgram() {
    prepared.reset();
    if (begins("releaseProgram")) {
        record({.verb = Verb::releaseProgram});
    }
}

HRESULT CRecordingDevice::lookup(int, int) {
    return begins("lookup") ? record({.verb = Verb::lookup}) : S_OK;
}

void CRecordingDevice::releaseLookup() {
    if (begins("releaseLookup")) {
        record({.verb = Verb::releaseLookup});
    }
}

HRESULT CRecordingDevice::upload(Surface surface, const SourceRows& rows) {
    if (!begins("upload")) {
        return S_OK;
    }
    RecordedUpload& upload = uploads.emplace_back(RecordedUpload{surface, rows, {}});
    for (int row = 0; row < rows.rowCount; ++row) {
        upload.contents.push_back(bytesOf({rows.data + row * rows.stepBytes, rows.rowBytes}));
    }
    return record({.verb = Verb::upload, .to = surface});
}

void CRecordingDevice::clear(Surface target, const std::array<float, 4>& colour) {
    if (begins("clear")) {
        record({.verb = Verb::clear, .to = target, .values = colour});
    }
}

HRESULT CRecordingDevice::draw(const render::Pass& pass) {
    ++drawCount;
    if (!begins("draw")) {
        return S_OK;
    }
    expectRecordOf(pass.constantSlot, pass.constants);
    return record({.verb = Verb::draw,
                   .program = pass.program,
                   .to = pass.target,
                   .textures = pass.textures,
                   .slot = pass.constantSlot,
                   .constants = bytesOf(pass.constants),
                   .range = pass.range,
                   .isBlended = pass.isBlended});
}

void CRecordingDevice::copy(Surface from, Surface to) {
    if (begins("copy")) {
        record({.verb = Verb::copy, .from = from, .to = to});
    }
}

void CRecordingDevice::copyBox(Surface from, const geometry::PixelBox& box, Surface to) {
    if (!begins("copyBox")) {
        return;
    }
    EXPECT_TRUE(!box.isEmpty() && box.left >= 0 && box.top >= 0 && box.right <= input.width &&
                box.bottom <= input.height);
    record({.verb = Verb::copyBox, .from = from, .to = to, .box = box});
}

void CRecordingDevice::flush() {
    if (begins("flush")) {
        record({});
    }
}

HRESULT CRecordingDevice::readBack(render::IMappedRowsVisitor& visitor) {
    if (begins("readBack")) {
        if (const HRESULT result = record({.verb = Verb::readBack}); FAILED(result)) {
            return result;
        }
    }
    return visitor.visit({picture.data(), pitch(), output.width, output.height});
}

void CRecordingDevice::close() {
    m_isOpen = false;
    prepared.reset();
    viewVertices.reset();
    markerVertices.reset();
    if (isRecording) {
        record({.verb = Verb::close});
    }
}

} // namespace tarvo::tests
