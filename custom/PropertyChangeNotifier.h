#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace tarvo::custom {

/// Tells listeners that something about an object changed: the base of the objects whose properties a host
/// may change behind the back of those who draw by them.
///
/// Any thread. A listener is called on the thread that made the change, with no lock of the notifier held, so
/// it may add and remove listeners, itself included, change the object once more, or let it go.
class PropertyChangeNotifier {
public:
    /// Decides the order of the calls and names the listener when it goes. An object that listens takes its
    /// address, see `keyOf`.
    using ListenerKey = std::uint64_t;
    using Listener = std::function<void(PropertyChangeNotifier&)>;

    PropertyChangeNotifier();
    PropertyChangeNotifier(const PropertyChangeNotifier&) = delete;
    PropertyChangeNotifier& operator=(const PropertyChangeNotifier&) = delete;

    static ListenerKey keyOf(const void* object) { return reinterpret_cast<std::uintptr_t>(object); }

    /// Adds a listener or puts it in the place of the one with that key, which then is removed as
    /// `removeListener` does it. std::bad_alloc without memory: all stays as it was.
    void addListener(ListenerKey key, Listener listener);

    /// Nothing happens without a listener of that key. Afterwards the listener is not called any more, and
    /// it is not running either: a call on another thread is waited for, so that what the listener uses can
    /// end. (Hold no lock that the listener takes.) Only a listener of this very notifier that removes one
    /// does not wait, for two of them could wait for each other.
    void removeListener(ListenerKey key);

    /// Calls all listeners in the order of their keys. One that is removed meanwhile is not called, one that
    /// is added is called if its turn is still to come. All are called even if one throws; the first
    /// exception is thrown on in the end.
    void notify();

protected:
    ~PropertyChangeNotifier();

private:
    struct Entry;
    class CState;

    // Shared with the notifications under way, which may outlive this object.
    std::shared_ptr<CState> m_state;
};

} // namespace tarvo::custom
