#pragma once

#include "com/ConnectionPoint.h"
#include "com/Enumerator.h"
#include "platform/InterfaceTypes.h"

#include <array>
#include <memory>
#include <type_traits>
#include <vector>

namespace tarvo::com {

struct ConnectionPointPolicy {
    using Stored = ComPtr<IConnectionPoint>;
    using Item = IConnectionPoint*;
    static void give(const Stored& stored, Item& item) noexcept { stored.copyTo(&item); }
};

/// Container of one connection point for each of the event interfaces; goes into an object's list as
/// `Implementing<CConnectionPointContainer<IThisEvents, IThatEvents>, IConnectionPointContainer>`.
template<class... Events>
class CConnectionPointContainer : public IConnectionPointContainer {
public:
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override {
        if (points == nullptr)
            return E_POINTER;
        *points = nullptr;
        return guarded([&] {
            auto list = std::make_shared<std::vector<ComPtr<IConnectionPoint>>>();
            for (CConnectionPoint& point : m_points)
                list->emplace_back(&point);
            using Enumerator = CEnumerator<IEnumConnectionPoints, ConnectionPointPolicy>;
            *points = makeObject<Enumerator>(std::move(list)).detach();
        });
    }

    /// CONNECT_E_NOCONNECTION if no point stands for the interface.
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        if (point == nullptr)
            return E_POINTER;
        *point = nullptr;
        for (CConnectionPoint& candidate : m_points) {
            IID offered{};
            candidate.GetConnectionInterface(&offered);
            if (offered == iid)
                return ComPtr<IConnectionPoint>(&candidate).copyTo(point);
        }
        return CONNECT_E_NOCONNECTION;
    }

    /// Disconnects all sinks; called when the object's last reference is gone.
    void endConnections() noexcept {
        for (CConnectionPoint& point : m_points)
            point.disconnectAll();
    }

protected:
    CConnectionPointContainer() noexcept = default;
    ~CConnectionPointContainer() = default;

    template<class Event>
    CConnectionPoint& connectionPoint() noexcept {
        static_assert((std::is_same_v<Event, Events> + ...) == 1);
        constexpr std::array<bool, sizeof...(Events)> isWanted{std::is_same_v<Event, Events>...};
        std::size_t index = 0;
        while (!isWanted[index])
            ++index;
        return m_points[index];
    }

private:
    std::array<CConnectionPoint, sizeof...(Events)> m_points{CConnectionPoint(*this, __uuidof(Events))...};
};

} // namespace tarvo::com
