#include "dshow/OutputPin.h"

#include "com/Guarded.h"
#include "dshow/BaseFilter.h"
#include "dshow/MemoryAllocator.h"

namespace tarvo::dshow {
namespace {

const GUID nothing{};

/// Whether a type has nothing that contradicts one which leaves parts open.
bool fits(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE* wanted) noexcept {
    const auto open = [](const GUID& part) { return part == nothing; };
    return wanted == nullptr || ((open(wanted->majortype) || wanted->majortype == type.majortype) &&
                                 (open(wanted->subtype) || wanted->subtype == type.subtype) &&
                                 (open(wanted->formattype) || wanted->formattype == type.formattype));
}

/// With its format given, a type says everything.
bool isWhole(const AM_MEDIA_TYPE* type) noexcept {
    return type != nullptr && type->majortype != nothing && type->formattype != nothing;
}

} // namespace

HRESULT COutputPin::queryMore(REFIID iid, void** object) {
    if (iid != __uuidof(IQualityControl))
        return CPin::queryMore(iid, object);
    *object = static_cast<IQualityControl*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP COutputPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    if (receiver == nullptr)
        return E_POINTER;
    return com::guarded([&]() -> HRESULT {
        const std::lock_guard lock(filter().lock());
        if (isConnected())
            return VFW_E_ALREADY_CONNECTED;
        if (!filter().isStopped())
            return VFW_E_NOT_STOPPED;
        PIN_DIRECTION direction = PINDIR_OUTPUT;
        if (FAILED(receiver->QueryDirection(&direction)) || direction != PINDIR_INPUT)
            return VFW_E_INVALID_DIRECTION;
        if (isWhole(type))
            return attempt(*receiver, *type);
        HRESULT best = VFW_E_NO_ACCEPTABLE_TYPES;
        if (SUCCEEDED(attemptPreferredOf(*receiver, *receiver, type, best)) ||
            SUCCEEDED(attemptPreferredOf(*this, *receiver, type, best)))
            return S_OK;
        return best;
    });
}

HRESULT COutputPin::attemptPreferredOf(IPin& owner, IPin& receiver, const AM_MEDIA_TYPE* wanted,
                                       HRESULT& best) {
    com::ComPtr<IEnumMediaTypes> types;
    if (FAILED(owner.EnumMediaTypes(types.put())) || !types)
        return VFW_E_NO_ACCEPTABLE_TYPES;
    for (;;) {
        AM_MEDIA_TYPE* allocated = nullptr;
        ULONG fetched = 0;
        if (types->Next(1, &allocated, &fetched) != S_OK || allocated == nullptr)
            return VFW_E_NO_ACCEPTABLE_TYPES;
        CPinType type;
        type.attachAllocated(allocated);
        // One that leaves parts open itself is no type to connect with.
        if (!fits(type.get(), wanted) || !isWhole(&type.get()))
            continue;
        const HRESULT result = attempt(receiver, type.get());
        if (SUCCEEDED(result))
            return result;
        if (result != VFW_E_TYPE_NOT_ACCEPTED)
            best = result;
    }
}

HRESULT COutputPin::attempt(IPin& receiver, const AM_MEDIA_TYPE& type) {
    if (checkMediaType(type) != S_OK)
        return VFW_E_TYPE_NOT_ACCEPTED;
    HRESULT result = keepConnection(receiver, type);
    if (SUCCEEDED(result))
        result = receiver.ReceiveConnection(this, &type);
    if (FAILED(result)) {
        dropConnection();
        return result;
    }
    result = connectionMade();
    if (FAILED(result)) {
        dropConnection();
        receiver.Disconnect();
        return result;
    }
    return S_OK;
}

STDMETHODIMP COutputPin::ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) {
    return E_UNEXPECTED;
}

STDMETHODIMP COutputPin::EndOfStream() {
    return E_UNEXPECTED;
}

STDMETHODIMP COutputPin::BeginFlush() {
    return E_UNEXPECTED;
}

STDMETHODIMP COutputPin::EndFlush() {
    return E_UNEXPECTED;
}

STDMETHODIMP COutputPin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    return E_UNEXPECTED;
}

STDMETHODIMP COutputPin::Notify(IBaseFilter*, Quality quality) {
    return com::guarded([&] { return passQuality(quality); });
}

STDMETHODIMP COutputPin::SetSink(IQualityControl*) {
    return E_NOTIMPL;
}

HRESULT COutputPin::passQuality(const Quality&) {
    return E_NOTIMPL;
}

HRESULT COutputPin::connectionMade() {
    HRESULT result = S_OK;
    const com::ComPtr<IMemInputPin> input = com::ComPtr<IPin>(connected()).as<IMemInputPin>(result);
    if (FAILED(result))
        return VFW_E_NO_TRANSPORT;
    ALLOCATOR_PROPERTIES wanted{};
    if (FAILED(input->GetAllocatorRequirements(&wanted)))
        wanted = {};
    if (wanted.cbAlign <= 0)
        wanted.cbAlign = 1;
    // The receiver's memory first: it may lie where the picture is shown.
    com::ComPtr<IMemAllocator> theirs;
    if (SUCCEEDED(input->GetAllocator(theirs.put())) && theirs) {
        result = tryAllocator(*input, *theirs, wanted);
        if (SUCCEEDED(result))
            return result;
    }
    const com::ComPtr<IMemAllocator> ours = com::makeObject<CMemoryAllocator>();
    return tryAllocator(*input, *ours, wanted);
}

HRESULT COutputPin::tryAllocator(IMemInputPin& input, IMemAllocator& allocator, ALLOCATOR_PROPERTIES wanted) {
    HRESULT result = decideBufferSize(allocator, wanted);
    if (SUCCEEDED(result))
        result = input.NotifyAllocator(&allocator, FALSE);
    if (FAILED(result))
        return result;
    m_input = com::ComPtr<IMemInputPin>(&input);
    m_allocator = com::ComPtr<IMemAllocator>(&allocator);
    return S_OK;
}

void COutputPin::connectionEnded() noexcept {
    m_allocator.reset();
    m_input.reset();
}

HRESULT COutputPin::activate() {
    return m_allocator ? m_allocator->Commit() : VFW_E_NO_ALLOCATOR;
}

void COutputPin::deactivate() noexcept {
    if (m_allocator)
        m_allocator->Decommit();
}

COutputPin::Receiver COutputPin::receiverNow() const {
    const std::lock_guard lock(filter().lock());
    return {com::ComPtr<IPin>(connected()), m_input, m_allocator};
}

HRESULT COutputPin::deliveryBuffer(com::ComPtr<IMediaSample>& sample) {
    sample.reset();
    const Receiver receiver = receiverNow();
    return receiver.allocator ? receiver.allocator->GetBuffer(sample.put(), nullptr, nullptr, 0)
                              : VFW_E_NO_ALLOCATOR;
}

HRESULT COutputPin::deliver(IMediaSample& sample) {
    const Receiver receiver = receiverNow();
    return receiver.input ? receiver.input->Receive(&sample) : VFW_E_NOT_CONNECTED;
}

HRESULT COutputPin::deliverEndOfStream() {
    const Receiver receiver = receiverNow();
    return receiver.pin ? receiver.pin->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT COutputPin::deliverBeginFlush() {
    const Receiver receiver = receiverNow();
    return receiver.pin ? receiver.pin->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT COutputPin::deliverEndFlush() {
    const Receiver receiver = receiverNow();
    return receiver.pin ? receiver.pin->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT COutputPin::deliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    const Receiver receiver = receiverNow();
    return receiver.pin ? receiver.pin->NewSegment(start, stop, rate) : VFW_E_NOT_CONNECTED;
}

} // namespace tarvo::dshow
