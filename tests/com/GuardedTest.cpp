#include "com/Guarded.h"

#include "com/Trace.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tarvo::com {
namespace {

TEST(Guarded, passesResultsThrough) {
    EXPECT_EQ(guarded([]() -> HRESULT { return S_FALSE; }), S_FALSE);
    EXPECT_EQ(guarded([]() -> HRESULT { return E_ABORT; }), E_ABORT);
    bool called = false;
    EXPECT_EQ(guarded([&] { called = true; }), S_OK);
    EXPECT_TRUE(called);
}

TEST(Guarded, turnsExceptionsIntoResults) {
    EXPECT_EQ(guarded([] { throw std::bad_alloc(); }), E_OUTOFMEMORY);
    EXPECT_EQ(guarded([] { throw CComError(E_ACCESSDENIED); }), E_ACCESSDENIED);
    EXPECT_EQ(guarded([] { throw std::logic_error("wrong"); }), E_FAIL);
    EXPECT_EQ(guarded([] { throw 5; }), E_UNEXPECTED);
}

TEST(Guarded, throwsOnlyForFailures) {
    EXPECT_NO_THROW(throwIfFailed(S_OK));
    EXPECT_NO_THROW(throwIfFailed(S_FALSE));
    EXPECT_THROW(throwIfFailed(E_OUTOFMEMORY), std::bad_alloc);
    EXPECT_THROW(throwIfFailed(E_FAIL), CComError);
}

using Reports = std::vector<std::pair<HRESULT, int>>;

struct Tried {
    int line = 0;
    bool wentOn = false;
    Reports reports;
    int evaluations = 0;
};

HRESULT tryOnce(HRESULT outcome, Tried& tried) {
    const auto trace = [&](HRESULT result, int line) { tried.reports.emplace_back(result, line); };
    const auto call = [&] {
        ++tried.evaluations;
        return outcome;
    };
    tried.line = __LINE__ + 1;
    RETURN_IF_FAILED_TRACED(trace, call());
    tried.wentOn = true;
    return S_OK;
}

TEST(Trace, reportsAFailureWithItsLineAndReturnsIt) {
    Tried tried;
    EXPECT_EQ(tryOnce(E_INVALIDARG, tried), E_INVALIDARG);
    EXPECT_FALSE(tried.wentOn);
    EXPECT_EQ(tried.evaluations, 1);
    EXPECT_EQ(tried.reports, (Reports{{E_INVALIDARG, tried.line}}));
}

TEST(Trace, isSilentAboutSuccessOfAnyKind) {
    for (const HRESULT success : {HRESULT{S_OK}, HRESULT{S_FALSE}, HRESULT{42}}) {
        Tried tried;
        EXPECT_EQ(tryOnce(success, tried), S_OK);
        EXPECT_TRUE(tried.wentOn);
        EXPECT_EQ(tried.evaluations, 1);
        EXPECT_TRUE(tried.reports.empty());
    }
}

TEST(Trace, canReportAndGoOn) {
    Reports reports;
    const auto trace = [&](HRESULT result, int line) { reports.emplace_back(result, line); };
    EXPECT_EQ(TRACE_IF_FAILED(trace, S_FALSE), S_FALSE);
    EXPECT_TRUE(reports.empty());
    const int line = __LINE__ + 1;
    EXPECT_EQ(TRACE_IF_FAILED(trace, E_FAIL), E_FAIL);
    EXPECT_EQ(reports, (Reports{{E_FAIL, line}}));
}

HRESULT silently(HRESULT outcome, bool& wentOn) {
    RETURN_IF_FAILED(outcome);
    wentOn = true;
    return S_OK;
}

TEST(Trace, hasASilentForm) {
    bool wentOn = false;
    EXPECT_EQ(silently(E_NOTIMPL, wentOn), E_NOTIMPL);
    EXPECT_FALSE(wentOn);
    EXPECT_EQ(silently(S_FALSE, wentOn), S_OK);
    EXPECT_TRUE(wentOn);
}

} // namespace
} // namespace tarvo::com
