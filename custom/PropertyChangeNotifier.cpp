#include "custom/PropertyChangeNotifier.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace tarvo::custom {

struct PropertyChangeNotifier::Entry {
    Listener listener;
    int runningCalls = 0;
};

class PropertyChangeNotifier::CState {
public:
    using EntryPtr = std::shared_ptr<Entry>;

    void put(ListenerKey key, EntryPtr entry) {
        std::unique_lock lock(m_lock);
        // The old entry takes the new one's place here, and its listener ends when the lock is open again.
        std::swap(m_entries[key], entry);
        waitUntilIdle(lock, entry);
    }

    void remove(ListenerKey key) {
        EntryPtr removed;
        std::unique_lock lock(m_lock);
        const auto found = m_entries.find(key);
        if (found == m_entries.end())
            return;
        removed = std::move(found->second);
        m_entries.erase(found);
        waitUntilIdle(lock, removed);
        lock.unlock();
    }

    /// Nobody is called any more.
    void clear() {
        std::map<ListenerKey, EntryPtr> removed;
        const std::lock_guard lock(m_lock);
        m_entries.swap(removed);
    }

    void beginNotification() {
        const std::lock_guard lock(m_lock);
        m_notifyingThreads.push_back(std::this_thread::get_id());
    }
    void endNotification() {
        const std::lock_guard lock(m_lock);
        m_notifyingThreads.erase(std::ranges::find(m_notifyingThreads, std::this_thread::get_id()));
    }

    /// The first listener whose key is above `last`, marked as running; null at the end.
    EntryPtr beginCall(std::optional<ListenerKey>& last) {
        const std::lock_guard lock(m_lock);
        const auto next = last ? m_entries.upper_bound(*last) : m_entries.begin();
        if (next == m_entries.end())
            return nullptr;
        last = next->first;
        ++next->second->runningCalls;
        return next->second;
    }
    void endCall(Entry& entry) {
        const std::lock_guard lock(m_lock);
        --entry.runningCalls;
        m_callEnded.notify_all();
    }

private:
    void waitUntilIdle(std::unique_lock<std::mutex>& lock, const EntryPtr& entry) {
        const bool isNotifying =
            std::ranges::find(m_notifyingThreads, std::this_thread::get_id()) != m_notifyingThreads.end();
        if (entry != nullptr && !isNotifying)
            m_callEnded.wait(lock, [&] { return entry->runningCalls == 0; });
    }

    std::mutex m_lock;
    std::condition_variable m_callEnded;
    std::map<ListenerKey, EntryPtr> m_entries;
    // One element for each notification under way; a thread whose listeners make changes has several.
    std::vector<std::thread::id> m_notifyingThreads;
};

PropertyChangeNotifier::PropertyChangeNotifier() : m_state(std::make_shared<CState>()) {}

PropertyChangeNotifier::~PropertyChangeNotifier() {
    m_state->clear();
}

void PropertyChangeNotifier::addListener(ListenerKey key, Listener listener) {
    m_state->put(key, std::make_shared<Entry>(Entry{std::move(listener)}));
}

void PropertyChangeNotifier::removeListener(ListenerKey key) {
    m_state->remove(key);
}

void PropertyChangeNotifier::notify() {
    // A listener may let go of the last reference to this object: then the state is empty and the loop ends.
    const std::shared_ptr<CState> state = m_state;
    state->beginNotification();
    std::exception_ptr failure;
    std::optional<ListenerKey> last;
    while (const CState::EntryPtr entry = state->beginCall(last)) {
        try {
            entry->listener(*this);
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
        state->endCall(*entry);
    }
    state->endNotification();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace tarvo::custom
