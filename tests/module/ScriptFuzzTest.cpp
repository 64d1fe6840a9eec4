#include "module/Registrar.h"
#include "platform/registry/MemoryRegistry.h"
#include "tests/module/Scripts.h"

#include <gtest/gtest.h>

#include <random>

namespace tarvo::module {
namespace {

using namespace tarvo::tests;

class CMutator {
public:
    explicit CMutator(unsigned seed) : m_random(seed) {}

    std::string mutate(std::string text) {
        for (std::size_t count = 1 + number(4); count > 0 && !text.empty(); --count)
            mutateOnce(text);
        return text;
    }

private:
    std::size_t number(std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_random);
    }

    void mutateOnce(std::string& text) {
        constexpr std::string_view pieces[] = {
            "{",      "}",        " { ", " } ",      "'",  "%", "=",      " val", "d",          "\n",
            "Delete", "NoRemove", "\\",  "%MODULE%", "\0", "b", "HKCR {", "\xFF", "ForceRemove"};
        const std::size_t place = number(text.size());
        const std::size_t length = 1 + number(20);
        switch (number(5)) {
        case 0:
            text[place] = static_cast<char>(number(256));
            break;
        case 1:
            text.erase(place, length);
            break;
        case 2:
            text.insert(place, pieces[number(std::size(pieces))]);
            break;
        case 3:
            text.insert(place, text.substr(number(text.size()), length));
            break;
        default:
            text.resize(place);
            break;
        }
    }

    std::mt19937 m_random;
};

TEST(ScriptFuzz, damagedScriptsAreCarriedOutWholeOrNotAtAll) {
    const std::string script = scriptOf("DewarpingTransform");
    const Replacements replacements = replacementsFor(dewarpingId, "/a/module.so");
    constexpr const char* before = "REGEDIT4\n[HKEY_CLASSES_ROOT\\CLSID\\{OTHER}]\n@=\"other\"\n";
    int refused = 0;
    int carriedOut = 0;
    CMutator mutator(20261121);
    for (int round = 0; round < 3000; ++round) {
        const std::string damaged = mutator.mutate(script);
        platform::CMemoryRegistry registry(before);
        const HRESULT result = CRegistrar(registry).registerScript(damaged, replacements);
        if (FAILED(result)) {
            ++refused;
            ASSERT_EQ(result, HRESULT(0x8007000DU)) << damaged;
            ASSERT_EQ(registry.regFile(), before) << damaged;
            ASSERT_EQ(CRegistrar(registry).unregisterScript(damaged, replacements), result) << damaged;
            ASSERT_EQ(registry.regFile(), before) << damaged;
        } else {
            ++carriedOut;
            ASSERT_EQ(CRegistrar(registry).unregisterScript(damaged, replacements), S_OK) << damaged;
        }
    }
    // Both kinds have to occur, or nothing was tried.
    EXPECT_GT(refused, 300);
    EXPECT_GT(carriedOut, 300);
}

} // namespace
} // namespace tarvo::module
