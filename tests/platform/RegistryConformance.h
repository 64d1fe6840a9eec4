#pragma once

#include "platform/Registry.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace tarvo::platform {

/// What every registry answers, the system's own as well as ours. `Subject` is made anew for each test, its
/// registry() is empty.
template<typename Subject>
class RegistryConformance : public testing::Test {
protected:
    IRegistry& registry() { return m_subject.registry(); }

    RegistryKey create(std::string_view path, RegistryKey parent = localMachine) {
        RegistryKey key = noRegistryKey;
        EXPECT_EQ(registry().createKey(parent, path, key), registryError::success) << path;
        return key;
    }

    RegistryKey open(const char* path, RegistryKey parent = localMachine) {
        RegistryKey key = noRegistryKey;
        EXPECT_EQ(registry().openKey(parent, path, key), registryError::success) << path;
        return key;
    }

    RegistryError openError(RegistryKey parent, const char* path) {
        RegistryKey key = 1;
        const RegistryError error = registry().openKey(parent, path, key);
        EXPECT_EQ(key, noRegistryKey);
        return error;
    }

    /// The value's bytes; its type has to be as given.
    std::string query(RegistryKey key, const char* name, std::uint32_t type) {
        char data[300];
        std::uint32_t foundType = 99;
        std::uint32_t size = sizeof data;
        EXPECT_EQ(registry().queryValue(key, name, foundType, data, size), registryError::success);
        EXPECT_EQ(foundType, type);
        return {data, size};
    }

    RegistryError queryError(RegistryKey key, const char* name) {
        std::uint32_t type = 0;
        std::uint32_t size = 0;
        return registry().queryValue(key, name, type, nullptr, size);
    }

private:
    Subject m_subject;
};

TYPED_TEST_SUITE_P(RegistryConformance);

TYPED_TEST_P(RegistryConformance, makesAndOpensKeys) {
    const RegistryKey made = this->create("SOFTWARE\\Tarvo\\TARVO Dewarping Transform DMO");
    const RegistryKey software = this->open("software");
    const RegistryKey tarvo = this->open("TARVO", software);
    const RegistryKey thing = this->open("TARVO Dewarping Transform DMO", tarvo);
    const RegistryKey again = this->open("", thing);
    EXPECT_EQ(this->registry().setDword(made, "DBGView", 2), registryError::success);
    EXPECT_EQ(this->query(again, "dbgview", registryType::dword), std::string("\2\0\0\0", 4));
    for (const RegistryKey key : {made, software, tarvo, thing, again})
        this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, opensTheSameKeyWithoutAPath) {
    const RegistryKey made = this->create("a");
    const RegistryKey again = this->open(nullptr, made);
    const RegistryKey root = this->open("", localMachine);
    const RegistryKey below = this->open("a", root);
    EXPECT_NE(again, noRegistryKey);
    this->registry().closeKey(made);
    this->registry().closeKey(again);
    this->registry().closeKey(root);
    this->registry().closeKey(below);
}

TYPED_TEST_P(RegistryConformance, hasBothRoots) {
    this->registry().closeKey(this->create("CLSID\\{1}", classesRoot));
    this->registry().closeKey(this->open("clsid\\{1}", classesRoot));
    EXPECT_EQ(this->openError(localMachine, "CLSID"), registryError::fileNotFound);
    this->registry().closeKey(localMachine);
    this->registry().closeKey(this->open("", localMachine));
}

TYPED_TEST_P(RegistryConformance, doesNotFindAbsentKeys) {
    EXPECT_EQ(this->openError(localMachine, "absent"), registryError::fileNotFound);
    EXPECT_EQ(this->openError(localMachine, "absent\\more"), registryError::fileNotFound);
}

TYPED_TEST_P(RegistryConformance, refusesKeysThatAreNone) {
    const RegistryKey key = this->create("a");
    this->registry().closeKey(key);
    for (const RegistryKey bad : {key, noRegistryKey}) {
        EXPECT_EQ(this->openError(bad, "b"), registryError::invalidHandle);
        EXPECT_EQ(this->queryError(bad, "b"), registryError::invalidHandle);
        EXPECT_EQ(this->registry().setDword(bad, "b", 1), registryError::invalidHandle);
        EXPECT_EQ(this->registry().setString(bad, "b", "x"), registryError::invalidHandle);
        EXPECT_EQ(this->registry().setBinary(bad, "b", "x", 1), registryError::invalidHandle);
        EXPECT_EQ(this->registry().deleteValue(bad, "b"), registryError::invalidHandle);
        EXPECT_EQ(this->registry().deleteKey(bad, "b"), registryError::invalidHandle);
        EXPECT_EQ(this->registry().deleteTree(bad, "b"), registryError::invalidHandle);
        std::vector<std::string> names;
        EXPECT_EQ(this->registry().subkeys(bad, names), registryError::invalidHandle);
        RegistryKey made = 1;
        EXPECT_EQ(this->registry().createKey(bad, "b", made), registryError::invalidHandle);
        EXPECT_EQ(made, noRegistryKey);
        this->registry().closeKey(bad);
    }
}

TYPED_TEST_P(RegistryConformance, readsWhatWasWritten) {
    using namespace std::string_literals;
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->registry().setString(key, "text", "c:\\log \"1\".log"), registryError::success);
    EXPECT_EQ(this->registry().setString(key, "lines", "a\r\nb"), registryError::success);
    EXPECT_EQ(this->registry().setString(key, "path", "%TEMP%\\x", registryType::expandString),
              registryError::success);
    EXPECT_EQ(this->registry().setString(key, "", "the default"), registryError::success);
    EXPECT_EQ(this->registry().setDword(key, "number", 0xFFFFFFFEU), registryError::success);
    EXPECT_EQ(this->registry().setBinary(key, "bytes", "\0\xFF\1", 3), registryError::success);
    EXPECT_EQ(this->registry().setBinary(key, "nothing", nullptr, 0), registryError::success);
    EXPECT_EQ(this->query(key, "text", registryType::string), "c:\\log \"1\".log\0"s);
    EXPECT_EQ(this->query(key, "lines", registryType::string), "a\r\nb\0"s);
    EXPECT_EQ(this->query(key, "path", registryType::expandString), "%TEMP%\\x\0"s);
    EXPECT_EQ(this->query(key, "", registryType::string), "the default\0"s);
    EXPECT_EQ(this->query(key, nullptr, registryType::string), "the default\0"s);
    EXPECT_EQ(this->query(key, "number", registryType::dword), "\xFE\xFF\xFF\xFF"s);
    EXPECT_EQ(this->query(key, "bytes", registryType::binary), "\0\xFF\1"s);
    EXPECT_EQ(this->query(key, "nothing", registryType::binary), "");
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, replacesAValueWithItsType) {
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->registry().setString(key, "v", "text"), registryError::success);
    EXPECT_EQ(this->registry().setDword(key, "V", 5), registryError::success);
    EXPECT_EQ(this->query(key, "v", registryType::dword), std::string("\5\0\0\0", 4));
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, tellsTheSizeItNeeds) {
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->registry().setString(key, "v", "12345"), registryError::success);
    std::uint32_t type = 99;
    std::uint32_t size = 1;
    EXPECT_EQ(this->registry().queryValue(key, "v", type, nullptr, size), registryError::success);
    EXPECT_EQ(size, 6U);
    EXPECT_EQ(type, registryType::string);
    char data[6];
    size = 5;
    type = 99;
    EXPECT_EQ(this->registry().queryValue(key, "v", type, data, size), registryError::moreData);
    EXPECT_EQ(size, 6U);
    EXPECT_EQ(type, registryType::string);
    EXPECT_EQ(this->registry().queryValue(key, "v", type, data, size), registryError::success);
    EXPECT_STREQ(data, "12345");
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, writesNothingBehindTheRoom) {
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->registry().setBinary(key, "v", "12345678", 8), registryError::success);
    char data[8];
    std::memset(data, 'x', sizeof data);
    std::uint32_t type = 0;
    std::uint32_t size = 4;
    EXPECT_EQ(this->registry().queryValue(key, "v", type, data, size), registryError::moreData);
    EXPECT_EQ(std::string(data + 4, 4), "xxxx");
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, doesNotFindAbsentValues) {
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->queryError(key, "absent"), registryError::fileNotFound);
    EXPECT_EQ(this->queryError(key, ""), registryError::fileNotFound);
    EXPECT_EQ(this->registry().deleteValue(key, "absent"), registryError::fileNotFound);
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, writesOnlyThroughKeysOpenedForWriting) {
    this->registry().closeKey(this->create("a"));
    const RegistryKey key = this->open("a");
    EXPECT_EQ(this->registry().setDword(key, "v", 1), registryError::accessDenied);
    EXPECT_EQ(this->registry().deleteValue(key, "v"), registryError::accessDenied);
    EXPECT_EQ(this->queryError(key, "v"), registryError::fileNotFound);
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, refusesWhatCannotBeWritten) {
    using namespace std::string_literals;
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->registry().setString(key, "v", "x", registryType::dword),
              registryError::invalidParameter);
    EXPECT_EQ(this->registry().setBinary(key, "v", nullptr, 1), registryError::invalidParameter);
    EXPECT_EQ(this->registry().setDword(key, "v\0w"s, 1), registryError::invalidParameter);
    EXPECT_EQ(this->queryError(key, "v"), registryError::fileNotFound);
    RegistryKey made = 1;
    EXPECT_EQ(this->registry().createKey(key, "b\0c"s, made), registryError::badPathname);
    EXPECT_EQ(made, noRegistryKey);
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, deletesValues) {
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->registry().setDword(key, "v", 1), registryError::success);
    EXPECT_EQ(this->registry().setDword(key, "w", 1), registryError::success);
    EXPECT_EQ(this->registry().deleteValue(key, "V"), registryError::success);
    EXPECT_EQ(this->queryError(key, "v"), registryError::fileNotFound);
    EXPECT_EQ(this->queryError(key, "w"), registryError::success);
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, deletesKeysFromBelow) {
    this->registry().closeKey(this->create("a\\b"));
    EXPECT_EQ(this->registry().deleteKey(localMachine, "a"), registryError::accessDenied);
    EXPECT_EQ(this->registry().deleteKey(localMachine, "a\\B"), registryError::success);
    EXPECT_EQ(this->openError(localMachine, "a\\b"), registryError::fileNotFound);
    EXPECT_EQ(this->registry().deleteKey(localMachine, "a\\b"), registryError::fileNotFound);
    EXPECT_EQ(this->registry().deleteKey(localMachine, "a"), registryError::success);
    EXPECT_EQ(this->openError(localMachine, "a"), registryError::fileNotFound);
    EXPECT_EQ(this->registry().deleteKey(localMachine, ""), registryError::invalidParameter);
}

TYPED_TEST_P(RegistryConformance, deletesTrees) {
    const RegistryKey below = this->create("a\\b\\c");
    EXPECT_EQ(this->registry().setDword(below, "v", 1), registryError::success);
    this->registry().closeKey(below);
    for (const char* path : {"a\\b\\d", "a\\bc", "B"})
        this->registry().closeKey(this->create(path));
    EXPECT_EQ(this->registry().deleteTree(localMachine, "A\\B"), registryError::success);
    EXPECT_EQ(this->openError(localMachine, "a\\b"), registryError::fileNotFound);
    EXPECT_EQ(this->openError(localMachine, "a\\b\\c"), registryError::fileNotFound);
    EXPECT_EQ(this->registry().deleteTree(localMachine, "a\\b"), registryError::fileNotFound);
    for (const char* path : {"a\\bc", "b"})
        this->registry().closeKey(this->open(path));

    // What comes again begins empty.
    const RegistryKey again = this->create("a\\b\\c");
    EXPECT_EQ(this->queryError(again, "v"), registryError::fileNotFound);
    this->registry().closeKey(again);
    EXPECT_EQ(this->registry().deleteTree(localMachine, "a\\b\\c"), registryError::success);
    this->registry().closeKey(this->open("a\\b"));
}

TYPED_TEST_P(RegistryConformance, deletesNoTreeWithoutItsName) {
    using namespace std::string_literals;
    const RegistryKey key = this->create("a");
    this->registry().closeKey(this->create("b", key));
    EXPECT_EQ(this->registry().deleteTree(key, ""), registryError::invalidParameter);
    EXPECT_NE(this->registry().deleteTree(key, "b\0c"s), registryError::success);
    this->registry().closeKey(this->open("a\\b"));
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, knowsThatAnOpenKeyWasDeleted) {
    const RegistryKey key = this->create("a");
    EXPECT_EQ(this->registry().deleteKey(localMachine, "a"), registryError::success);
    EXPECT_EQ(this->queryError(key, "v"), registryError::keyDeleted);
    EXPECT_EQ(this->registry().setDword(key, "v", 1), registryError::keyDeleted);
    EXPECT_EQ(this->openError(key, "b"), registryError::keyDeleted);
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, listsSubkeysInOrder) {
    const RegistryKey key = this->create("a");
    for (const char* path : {"b\\deeper", "C", "\xC3\xA4", "A"})
        this->registry().closeKey(this->create(path, key));
    std::vector<std::string> names{"left over"};
    EXPECT_EQ(this->registry().subkeys(key, names), registryError::success);
    EXPECT_EQ(names, (std::vector<std::string>{"A", "b", "C", "\xC3\xA4"}));
    const RegistryKey empty = this->open("C", key);
    EXPECT_EQ(this->registry().subkeys(empty, names), registryError::success);
    EXPECT_TRUE(names.empty());
    this->registry().closeKey(empty);
    this->registry().closeKey(key);
}

TYPED_TEST_P(RegistryConformance, servesManyThreads) {
    constexpr int threadCount = 4;
    constexpr int rounds = 20;
    const RegistryKey key = this->create("a");
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < rounds; ++round) {
                const std::string name = std::to_string(thread) + "-" + std::to_string(round);
                EXPECT_EQ(this->registry().setDword(key, name, 1), registryError::success);
                this->registry().closeKey(this->open("a"));
                EXPECT_EQ(this->queryError(key, name.c_str()), registryError::success);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (int thread = 0; thread < threadCount; ++thread) {
        for (int round = 0; round < rounds; ++round) {
            const std::string name = std::to_string(thread) + "-" + std::to_string(round);
            EXPECT_EQ(this->queryError(key, name.c_str()), registryError::success) << name;
        }
    }
    this->registry().closeKey(key);
}

REGISTER_TYPED_TEST_SUITE_P(RegistryConformance, makesAndOpensKeys, opensTheSameKeyWithoutAPath, hasBothRoots,
                            doesNotFindAbsentKeys, refusesKeysThatAreNone, readsWhatWasWritten,
                            replacesAValueWithItsType, tellsTheSizeItNeeds, writesNothingBehindTheRoom,
                            doesNotFindAbsentValues, writesOnlyThroughKeysOpenedForWriting,
                            refusesWhatCannotBeWritten, deletesValues, deletesKeysFromBelow, deletesTrees,
                            deletesNoTreeWithoutItsName, knowsThatAnOpenKeyWasDeleted, listsSubkeysInOrder,
                            servesManyThreads);

} // namespace tarvo::platform
