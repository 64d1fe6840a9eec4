#pragma once

#include <optional>

namespace tarvo::bench {

/// How busy others kept the machine since the object was made: figures of a machine with other work say
/// little.
class COtherWork {
public:
    COtherWork();

    /// The share of the time of all processors that went to others, 0 to 1, the machine's own host included;
    /// nothing when the system does not tell.
    std::optional<double> share() const;

private:
    /// Seconds of all processors together.
    struct Account {
        double all = 0.0;
        double idle = 0.0;
        double own = 0.0;
    };
    static std::optional<Account> read();

    std::optional<Account> m_before;
};

} // namespace tarvo::bench
