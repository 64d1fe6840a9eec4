#include "transform/streaming/TypeNegotiation.h"

#include "transform/streaming/FrameRate.h"
#include "transform/streaming/MediaObjectResults.h"
#include "transform/streaming/OutputTypeOffer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarvo::transform {
namespace {

using diagnostics::LogCategory;
using geometry::OptionFlag;

constexpr DWORD offeredOutputTypes = 4;

std::uint32_t magnitude(std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    return value < 0 ? 0U - bits : bits;
}

/// For lines that have "%i".
int printable(std::int64_t value) {
    constexpr std::int64_t least = std::numeric_limits<int>::min();
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, least, most));
}

/// The row of a type that is video of one of the formats; else null.
const StreamFormat* videoFormatOf(const DMO_MEDIA_TYPE* type, std::span<const StreamFormat> formats) {
    if (type == nullptr || type->majortype != MEDIATYPE_Video)
        return nullptr;
    return findFormat(formats, type->subtype);
}

bool isSide(std::uint32_t side) {
    return side != 0 && side <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
}

/// The type that says nothing but what kind of video it is.
HRESULT makeBareType(const StreamFormat& format, DMO_MEDIA_TYPE& type) {
    type = DMO_MEDIA_TYPE{};
    type.majortype = MEDIATYPE_Video;
    type.subtype = *format.subtype;
    return S_OK;
}

} // namespace

HRESULT CTypeNegotiation::checkInputType(const DMO_MEDIA_TYPE* type) {
    constexpr const char* context = "InternalCheckInputType";
    const StreamFormat* format = videoFormatOf(type, inputFormats());
    if (format == nullptr)
        return typeNotAccepted;
    const auto video = readVideoFormat(*type);
    if (!video)
        return typeNotAccepted;

    NegotiatedFormats found = formats();
    found.inputFrameRate = framesPerSecond(video->ticksPerFrame);
    m_settings.inputFrameRate = found.inputFrameRate;
    const std::uint32_t height = magnitude(video->height);
    if (video->width < 1 || !isSide(height)) {
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, context, "Invalid resolution: %ix%i",
                  printable(video->width), printable(video->height));
        return typeNotAccepted;
    }
    const auto width = static_cast<std::uint32_t>(video->width);
    // None at all is common practice for RGB, too few bytes are a mistake that no frame could make good.
    if (video->imageBytes != 0 && video->imageBytes < format->packedFrameBytes(width, height))
        return typeNotAccepted;

    found.inputFormat = format;
    found.isInputBottomUp = format->pixelFormat == render::PixelFormat::rgb32 && video->height > 0;
    found.inputImageBytes = video->imageBytes;
    found.inputWidth = width;
    found.inputHeight = height;
    found.inputStrideBytes = format->strideBytes(video->imageBytes, height);
    const bool hasOutputSize = deriveOutputSize(found);
    {
        const std::lock_guard lock(m_formatsLock);
        m_formats = found;
    }
    m_owner.inputChecked();
    // Built anew for the new size when next needed.
    m_owner.releaseRenderResources();
    if (!hasOutputSize)
        return typeNotAccepted;
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, context, "%s:%ix%i@%.1f", format->name,
              printable(width), printable(height), found.inputFrameRate);
    return S_OK;
}

bool CTypeNegotiation::deriveOutputSize(NegotiatedFormats& formats) {
    const ViewFacts facts = m_owner.viewFacts();
    geometry::OutputSizeRequest request;
    request.input = {formats.inputWidth, formats.inputHeight};
    request.viewType = facts.viewType;
    request.options = m_settings.options;
    request.wanted = {m_settings.outputWidth, m_settings.outputHeight};
    // The host may put negative sides; two that are not positive are none.
    if (static_cast<std::int32_t>(request.wanted.width) <= 0 &&
        static_cast<std::int32_t>(request.wanted.height) <= 0)
        request.wanted = {};
    request.isWantedSet = m_settings.isOutputSizeSet;
    request.panoramaFieldOfViewDegrees = facts.panoramaFieldOfViewDegrees;
    request.customAspect = facts.customAspect;

    formats.inputAspect = static_cast<float>(formats.inputWidth) / static_cast<float>(formats.inputHeight);
    const geometry::PictureSize size = geometry::deriveOutputSize(request);
    if (!isSide(size.width) || !isSide(size.height)) {
        TARVO_LOG(m_log.log, LogCategory::error, m_log.instanceId, "InternalCheckInputType",
                  "Invalid output resolution: %ux%u", unsigned{size.width}, unsigned{size.height});
        return false;
    }
    m_settings.outputWidth = size.width;
    m_settings.outputHeight = size.height;
    formats.outputWidth = size.width;
    formats.outputHeight = size.height;
    formats.outputAspect = static_cast<float>(size.width) / static_cast<float>(size.height);
    return true;
}

HRESULT CTypeNegotiation::checkOutputType(const DMO_MEDIA_TYPE* type) {
    constexpr const char* context = "InternalCheckOutputType";
    const StreamFormat* format = videoFormatOf(type, outputFormats());
    if (format == nullptr)
        return typeNotAccepted;
    if (geometry::hasFlag(m_settings.options, OptionFlag::forceRgbOutput) && format->compression != BI_RGB)
        return typeNotAccepted;
    const auto video = readVideoFormat(*type);
    if (!video)
        return typeNotAccepted;

    NegotiatedFormats found = formats();
    if (video->targetWidth >= 1 && video->targetWidth != found.outputWidth) {
        TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, context,
                  "%s:Suggested width does not match (%i != %i)", format->name, printable(video->targetWidth),
                  printable(found.outputWidth));
        return typeNotAccepted;
    }
    if (video->height == 0)
        return typeNotAccepted;

    if (!m_settings.isOutputRateLimited)
        m_settings.outputFrameRate = framesPerSecond(video->ticksPerFrame);
    found.outputFrameRate = m_settings.outputFrameRate;
    found.outputFormat = format;
    found.isOutputBottomUp = video->height > 0;
    found.outputImageBytes = video->imageBytes;
    found.outputStrideBytes = format->strideBytes(video->imageBytes, magnitude(video->height));
    {
        const std::lock_guard lock(m_formatsLock);
        m_formats = found;
    }
    TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, context, "%s:%ix%i@%.1f (STRIDE: %i)",
              format->name, printable(found.outputWidth), printable(found.outputHeight),
              found.outputFrameRate, printable(found.outputStrideBytes));
    // What is no number counts as a remainder, too.
    if (found.inputFrameRate > 0.0 && !(std::fmod(found.outputFrameRate, found.inputFrameRate) == 0.0))
        TARVO_LOG(m_log.log, LogCategory::information, m_log.instanceId, context, "%s",
                  "WARNING: Output frame rate not a multiple of input frame rate");
    m_owner.outputChecked();
    m_owner.freeCachedFrame();
    m_owner.releaseCurrentImage();
    return S_OK;
}

HRESULT CTypeNegotiation::offerInputType(DWORD index, DMO_MEDIA_TYPE* type) const {
    const auto formats = inputFormats();
    if (index >= formats.size())
        return noMoreItems;
    return type == nullptr ? S_OK : makeBareType(formats[index], *type);
}

HRESULT CTypeNegotiation::offerOutputType(DWORD index, bool isInputTypeSet, DMO_MEDIA_TYPE* type) {
    if (index >= offeredOutputTypes)
        return noMoreItems;
    if (type == nullptr)
        return S_OK;
    if (!isInputTypeSet)
        return makeBareType(outputFormats()[index & 1], *type);
    *type = DMO_MEDIA_TYPE{};
    if (!m_owner.hasDevice() && FAILED(m_owner.createDevice())) {
        m_owner.releaseRenderResources();
        return E_FAIL;
    }
    return fillOutputType(index, type);
}

HRESULT CTypeNegotiation::fillOutputType(DWORD index, DMO_MEDIA_TYPE* type) const {
    const NegotiatedFormats now = formats();
    const double rate = now.outputFrameRate == 0.0 ? now.inputFrameRate : now.outputFrameRate;
    const bool hasAspect = index < 2;
    return makeOutputType(outputFormats()[index & 1], now.outputWidth, now.outputHeight, ticksPerFrame(rate),
                          hasAspect, *type);
}

NegotiatedFormats CTypeNegotiation::formats() const {
    NegotiatedFormats copy;
    {
        const std::lock_guard lock(m_formatsLock);
        copy = m_formats;
    }
    copy.outputWidth = m_settings.outputWidth;
    copy.outputHeight = m_settings.outputHeight;
    copy.outputFrameRate = m_settings.outputFrameRate;
    copy.inputFrameRate = m_settings.inputFrameRate;
    return copy;
}

} // namespace tarvo::transform
