#include "tests/apps/AppTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace tarvo::apps {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

std::map<std::string, std::string> valuesOf(const std::string& out) {
    std::map<std::string, std::string> values;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t colon = line.find(": ");
        EXPECT_NE(colon, std::string::npos) << line;
        values[line.substr(0, colon)] = line.substr(colon + 2);
    }
    return values;
}

class InfoCommand : public CAppTest {
protected:
    void expectFailure(const std::vector<std::string>& arguments, const std::string& message) const {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(message));
    }
};

TEST_F(InfoCommand, tellsWhatTheModuleOffers) {
    const Outcome outcome = run({"info"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    auto values = valuesOf(outcome.out);
    EXPECT_TRUE(std::filesystem::equivalent(values["module"], TARVO_PRODUCT_MODULE)) << values["module"];
    EXPECT_THAT(values["version"], AnyOf("1.0", "no type library on this system"));
    EXPECT_THAT(values["classes"], HasSubstr("DewarpingTransform"));
    EXPECT_EQ(values["input"], "YUY2, YV12, RGB32");
    EXPECT_EQ(values["output"], "YV12, RGB32");
    if (values["dewarping"] == "possible") {
        EXPECT_THAT(values["render device"], AnyOf("hardware", "software"));
    } else {
        EXPECT_EQ(values["dewarping"], "not possible");
        EXPECT_THAT(values["render device"], testing::StartsWith("none, since "));
    }
    EXPECT_EQ(values.size(), 7U);
    EXPECT_EQ(run({"info", "--module", TARVO_PRODUCT_MODULE}).status, 0) << "once more, and by its path";
}

TEST_F(InfoCommand, andItsSiblingsRefuseWhatIsNoModule) {
    writeBytes(file("text.dll"), "This is no library.\n");
    for (const std::string command : {"info", "register", "unregister"}) {
        SCOPED_TRACE(command);
        expectFailure({command, "--module", fileText("absent.dll")}, "there is no such file (0x800401F8)");
        expectFailure({command, "--module", fileText("text.dll")},
                      "the file is no library that this system can load (0x800401F9)");
        expectFailure({command, "--module", TARVO_PLAIN_LIBRARY},
                      "the library has no function DllGetClassObject (0x800401F9)");
        const Outcome unnamed = run({command, "--module", ""});
        EXPECT_EQ(unnamed.status, 2);
        EXPECT_THAT(unnamed.err, HasSubstr("--module: \"\" is not allowed; give the name of a file"));
        EXPECT_EQ(run({command, "--pan", "3"}).status, 2);
        EXPECT_THAT(run({command, "--help"}).out, HasSubstr("Example"));
    }
    EXPECT_EQ(names(), std::vector<std::string>{"text.dll"}) << "nothing is left behind";
}

TEST_F(InfoCommand, refusesAModuleWithOtherClasses) {
    expectFailure({"info", "--module", TARVO_PROBE_MODULE}, "creating the transform failed: ");
}

} // namespace
} // namespace tarvo::apps
