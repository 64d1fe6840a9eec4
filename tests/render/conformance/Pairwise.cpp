#include "tests/render/conformance/Pairwise.h"

#include <algorithm>
#include <cstddef>

namespace tarvo::tests {
namespace {

/// Which two levels have met yet.
class CMeetings {
public:
    explicit CMeetings(std::span<const int> levelCounts) : m_levelCounts(levelCounts) {
        for (const int count : levelCounts) {
            m_firstLevel.push_back(m_levelTotal);
            m_levelTotal += static_cast<std::size_t>(count);
        }
        m_hasMet.resize(m_levelTotal * m_levelTotal);
    }

    bool haveMet(std::size_t factor, int level, std::size_t other, int otherLevel) const {
        return m_hasMet[index(factor, level, other, otherLevel)];
    }

    /// How many meetings with the levels set so far (-1: not yet) would be the first.
    int newWith(const Levels& row, std::size_t factor, int level) const {
        int count = 0;
        for (std::size_t other = 0; other < row.size(); ++other) {
            if (other != factor && row[other] >= 0) {
                count += haveMet(factor, level, other, row[other]) ? 0 : 1;
            }
        }
        return count;
    }

    /// A row that has two levels which never met, and -1 elsewhere; empty when there are none.
    Levels nextUnmet() const {
        const std::size_t factors = m_levelCounts.size();
        for (std::size_t a = 0; a < factors; ++a) {
            for (std::size_t b = a + 1; b < factors; ++b) {
                for (int i = 0; i < m_levelCounts[a]; ++i) {
                    for (int j = 0; j < m_levelCounts[b]; ++j) {
                        if (!haveMet(a, i, b, j)) {
                            Levels row(factors, -1);
                            row[a] = i;
                            row[b] = j;
                            return row;
                        }
                    }
                }
            }
        }
        return {};
    }

    void note(const Levels& row) {
        for (std::size_t a = 0; a < row.size(); ++a) {
            for (std::size_t b = 0; b < row.size(); ++b) {
                m_hasMet[index(a, row[a], b, row[b])] = true;
            }
        }
    }

private:
    std::size_t index(std::size_t factor, int level, std::size_t other, int otherLevel) const {
        return (m_firstLevel[factor] + static_cast<std::size_t>(level)) * m_levelTotal + m_firstLevel[other] +
               static_cast<std::size_t>(otherLevel);
    }

    std::span<const int> m_levelCounts;
    std::vector<std::size_t> m_firstLevel;
    std::size_t m_levelTotal = 0;
    std::vector<bool> m_hasMet;
};

} // namespace

std::vector<Levels> pairwise(std::span<const int> levelCounts) {
    if (levelCounts.size() < 2) {
        return wholeProduct(levelCounts);
    }
    std::vector<Levels> rows;
    CMeetings meetings(levelCounts);
    for (Levels row = meetings.nextUnmet(); !row.empty(); row = meetings.nextUnmet()) {
        for (std::size_t factor = 0; factor < row.size(); ++factor) {
            if (row[factor] >= 0) {
                continue;
            }
            int best = -1;
            // What adds nothing new takes turns, so that its levels still mix.
            const int turn = static_cast<int>(rows.size()) % levelCounts[factor];
            for (int step = 0; step < levelCounts[factor]; ++step) {
                const int level = (turn + step) % levelCounts[factor];
                const int count = meetings.newWith(row, factor, level);
                if (count > best) {
                    best = count;
                    row[factor] = level;
                }
            }
        }
        meetings.note(row);
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<Levels> wholeProduct(std::span<const int> levelCounts) {
    std::vector<Levels> rows{{}};
    for (const int count : levelCounts) {
        std::vector<Levels> longer;
        for (const Levels& row : rows) {
            for (int level = 0; level < count; ++level) {
                longer.push_back(row);
                longer.back().push_back(level);
            }
        }
        rows = std::move(longer);
    }
    return rows;
}

} // namespace tarvo::tests
