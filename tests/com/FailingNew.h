#pragma once

namespace tarvo::com {

/// For as long as it lives, operator new of this thread succeeds `granted` more times and then throws.
class CFailingNew {
public:
    explicit CFailingNew(int granted) noexcept;
    ~CFailingNew();
    CFailingNew(const CFailingNew&) = delete;
    CFailingNew& operator=(const CFailingNew&) = delete;
};

/// Runs `attempt`, which says whether it succeeded, with one more allocation granted each time until it does.
/// The number of attempts that failed, -1 if it never succeeds.
template<class Attempt>
int failuresUntilSuccess(Attempt&& attempt) {
    for (int granted = 0; granted < 100; ++granted) {
        if (attempt(granted))
            return granted;
    }
    return -1;
}

} // namespace tarvo::com
