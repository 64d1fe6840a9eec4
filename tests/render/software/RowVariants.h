#pragma once

#include "render/software/kernels/RowChoice.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace tarvo::render::software {

inline constexpr std::uint8_t guard = 0xA5;

inline void PrintTo(const RowVariant& variant, std::ostream* out) {
    *out << variant.name;
}

/// One variant of the rows beside the plain one; what the processor lacks is reported as not run.
class RowVariants : public testing::TestWithParam<RowVariant> {
protected:
    void SetUp() override {
        if (GetParam().needs > detectInstructionSet())
            GTEST_SKIP() << "this processor has no " << instructionSetName(GetParam().needs);
    }

    const RowKernels& variant() const { return *GetParam().kernels; }
    static const RowKernels& plain() { return plainRows; }

    float between(float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); }
    int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

    std::mt19937 random{17};
};

/// Elements at an odd place in memory, with a guard on either side.
template<typename Element>
class CGuarded {
public:
    explicit CGuarded(int count, std::size_t offset = 0)
        : m_count(static_cast<std::size_t>(count)), m_begin(16 + offset),
          m_elements(m_count + 32 + offset, guardElement()) {}

    Element* data() { return m_elements.data() + m_begin; }
    std::span<const Element> content() { return {data(), m_count}; }
    bool isGuardIntact() const {
        for (std::size_t i = 0; i < m_elements.size(); ++i) {
            const bool isOutside = i < m_begin || i >= m_begin + m_count;
            const Element expected = guardElement();
            if (isOutside && std::memcmp(&m_elements[i], &expected, sizeof(Element)) != 0)
                return false;
        }
        return true;
    }

private:
    static Element guardElement() {
        Element element;
        std::memset(&element, guard, sizeof(element));
        return element;
    }

    std::size_t m_count;
    std::size_t m_begin;
    std::vector<Element> m_elements;
};

/// The same bits; numbers that are none count as equal.
inline void expectSame(std::span<const float> expected, std::span<const float> actual) {
    ASSERT_EQ(expected.size(), actual.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (expected[i] != expected[i]) {
            ASSERT_NE(actual[i], actual[i]) << i;
        } else {
            ASSERT_EQ(std::bit_cast<std::uint32_t>(expected[i]), std::bit_cast<std::uint32_t>(actual[i]))
                << i;
        }
    }
}

/// All but the plain one.
inline const auto vectorVariants = testing::ValuesIn(rowVariants().subspan(1).begin(), rowVariants().end());

inline std::string variantName(const testing::TestParamInfo<RowVariant>& variant) {
    return variant.param.name;
}

} // namespace tarvo::render::software
