#include "platform/InterfaceTypes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace tarvo::platform {
namespace {

using Text = std::basic_string<OLECHAR>;

std::string narrow(const OLECHAR* text) {
    std::string result;
    for (; *text != 0; ++text)
        result.push_back(static_cast<char>(*text));
    return result;
}

class VariantConversion : public testing::Test {
protected:
    VariantConversion() {
        VariantInit(&m_source);
        VariantInit(&m_target);
    }
    ~VariantConversion() override {
        VariantClear(&m_source);
        VariantClear(&m_target);
    }

    void setReal(double value) {
        VariantClear(&m_source);
        m_source.vt = VT_R8;
        m_source.dblVal = value;
    }
    void setLong(LONG value) {
        VariantClear(&m_source);
        m_source.vt = VT_I4;
        m_source.lVal = value;
    }
    void setText(const OLECHAR* text) {
        VariantClear(&m_source);
        m_source.vt = VT_BSTR;
        m_source.bstrVal = SysAllocString(text);
    }
    HRESULT convert(VARTYPE type, USHORT flags = 0) {
        return VariantChangeType(&m_target, &m_source, flags, type);
    }
    HRESULT convertReal(double value, VARTYPE type) {
        setReal(value);
        return convert(type);
    }

    VARIANT m_source;
    VARIANT m_target;
};

TEST_F(VariantConversion, roundsHalvesToTheEvenNeighbour) {
    const struct {
        double from;
        LONG to;
    } cases[] = {{0.5, 0}, {1.5, 2}, {2.5, 2}, {-0.5, 0}, {-1.5, -2}, {2.4999, 2}, {-7.75, -8}};
    for (const auto& [from, to] : cases) {
        ASSERT_EQ(convertReal(from, VT_I4), S_OK);
        EXPECT_EQ(m_target.vt, VT_I4);
        EXPECT_EQ(m_target.lVal, to) << from;
    }
}

TEST_F(VariantConversion, refusesWhatDoesNotFitAndKeepsTheTarget) {
    ASSERT_EQ(convertReal(42, VT_I4), S_OK);
    EXPECT_EQ(convertReal(2147483648.0, VT_I4), DISP_E_OVERFLOW);
    EXPECT_EQ(convertReal(-2147483649.0, VT_I4), DISP_E_OVERFLOW);
    EXPECT_EQ(convertReal(1e300, VT_R4), DISP_E_OVERFLOW);
    EXPECT_EQ(convertReal(256, VT_UI1), DISP_E_OVERFLOW);
    EXPECT_EQ(convertReal(-1, VT_UI1), DISP_E_OVERFLOW);
    EXPECT_EQ(convertReal(40000, VT_I2), DISP_E_OVERFLOW);
    setLong(-1);
    EXPECT_EQ(convert(VT_UI2), DISP_E_OVERFLOW);
    setLong(200);
    EXPECT_EQ(convert(VT_I1), DISP_E_OVERFLOW);
    EXPECT_EQ(m_target.vt, VT_I4);
    EXPECT_EQ(m_target.lVal, 42);
}

TEST_F(VariantConversion, reachesTheEndsOfEachType) {
    ASSERT_EQ(convertReal(2147483647.0, VT_I4), S_OK);
    EXPECT_EQ(m_target.lVal, 2147483647);
    ASSERT_EQ(convertReal(-32768, VT_I2), S_OK);
    EXPECT_EQ(m_target.iVal, -32768);
    ASSERT_EQ(convertReal(255, VT_UI1), S_OK);
    EXPECT_EQ(m_target.bVal, 255);
    ASSERT_EQ(convertReal(4294967295.0, VT_UI4), S_OK);
    EXPECT_EQ(m_target.ulVal, 4294967295U);
    m_source.vt = VT_I8;
    m_source.llVal = std::numeric_limits<std::int64_t>::max();
    ASSERT_EQ(convert(VT_UI8), S_OK);
    EXPECT_EQ(m_target.ullVal, 9223372036854775807ULL);
    ASSERT_EQ(convert(VT_R8), S_OK);
    EXPECT_EQ(m_target.dblVal, 9223372036854775808.0);
}

TEST_F(VariantConversion, turnsNumbersIntoTruthAndBack) {
    setLong(3);
    ASSERT_EQ(convert(VT_BOOL), S_OK);
    EXPECT_EQ(m_target.boolVal, VARIANT_TRUE);
    ASSERT_EQ(convertReal(0, VT_BOOL), S_OK);
    EXPECT_EQ(m_target.boolVal, VARIANT_FALSE);
    m_source.vt = VT_BOOL;
    m_source.boolVal = VARIANT_TRUE;
    ASSERT_EQ(convert(VT_I4), S_OK);
    EXPECT_EQ(m_target.lVal, -1);
    ASSERT_EQ(convert(VT_R8), S_OK);
    EXPECT_EQ(m_target.dblVal, -1);
    ASSERT_EQ(convert(VT_UI1), S_OK);
    EXPECT_EQ(m_target.bVal, 255);
    ASSERT_EQ(convert(VT_UI2), S_OK);
    EXPECT_EQ(m_target.uiVal, 65535);
    ASSERT_EQ(convert(VT_UI4), S_OK);
    EXPECT_EQ(m_target.ulVal, 0xFFFFFFFFU);
    ASSERT_EQ(convert(VT_UI8), S_OK);
    EXPECT_EQ(m_target.ullVal, 0xFFFFFFFFFFFFFFFFU);
    ASSERT_EQ(convert(VT_BSTR), S_OK);
    EXPECT_EQ(Text(m_target.bstrVal), OLESTR("-1"));
    ASSERT_EQ(convert(VT_BSTR, VARIANT_ALPHABOOL), S_OK);
    EXPECT_EQ(Text(m_target.bstrVal), OLESTR("True"));
}

TEST_F(VariantConversion, readsNumbersInTexts) {
    setText(OLESTR(" 42 "));
    ASSERT_EQ(convert(VT_I4), S_OK);
    EXPECT_EQ(m_target.lVal, 42);
    setText(OLESTR("-17.25"));
    ASSERT_EQ(convert(VT_R8), S_OK);
    EXPECT_EQ(m_target.dblVal, -17.25);
    setText(OLESTR("1.5e3"));
    ASSERT_EQ(convert(VT_R4), S_OK);
    EXPECT_EQ(m_target.fltVal, 1500.0F);
    setText(OLESTR("+5"));
    ASSERT_EQ(convert(VT_UI1), S_OK);
    EXPECT_EQ(m_target.bVal, 5);
    setText(OLESTR("True"));
    ASSERT_EQ(convert(VT_BOOL), S_OK);
    EXPECT_EQ(m_target.boolVal, VARIANT_TRUE);
    setText(OLESTR("70000"));
    EXPECT_EQ(convert(VT_I2), DISP_E_OVERFLOW);
    for (const OLECHAR* wrong : {OLESTR(""), OLESTR("wall"), OLESTR("1x"), OLESTR("inf")}) {
        setText(wrong);
        EXPECT_EQ(convert(VT_I4), DISP_E_TYPEMISMATCH) << narrow(wrong);
        EXPECT_EQ(convert(VT_R8), DISP_E_TYPEMISMATCH) << narrow(wrong);
        EXPECT_EQ(convert(VT_BOOL), DISP_E_TYPEMISMATCH) << narrow(wrong);
    }
}

TEST_F(VariantConversion, writesNumbersAsTexts) {
    setLong(-90);
    ASSERT_EQ(convert(VT_BSTR), S_OK);
    EXPECT_EQ(m_target.vt, VT_BSTR);
    EXPECT_EQ(Text(m_target.bstrVal), OLESTR("-90"));
    ASSERT_EQ(convertReal(0.5, VT_BSTR), S_OK);
    EXPECT_EQ(Text(m_target.bstrVal), OLESTR("0.5"));
    ASSERT_EQ(convertReal(120, VT_BSTR), S_OK);
    EXPECT_EQ(Text(m_target.bstrVal), OLESTR("120"));
    ASSERT_EQ(convertReal(0.1, VT_BSTR), S_OK);
    EXPECT_EQ(Text(m_target.bstrVal), OLESTR("0.1"));
}

TEST_F(VariantConversion, takesEmptyAsZero) {
    ASSERT_EQ(convert(VT_R8), S_OK);
    EXPECT_EQ(m_target.dblVal, 0);
    ASSERT_EQ(convert(VT_BSTR), S_OK);
    EXPECT_EQ(SysStringLen(m_target.bstrVal), 0U);
    m_source.vt = VT_NULL;
    EXPECT_EQ(convert(VT_I4), DISP_E_TYPEMISMATCH);
}

TEST_F(VariantConversion, worksInPlaceAndThroughReferences) {
    setText(OLESTR("12"));
    ASSERT_EQ(VariantChangeType(&m_source, &m_source, 0, VT_I4), S_OK);
    EXPECT_EQ(m_source.vt, VT_I4);
    EXPECT_EQ(m_source.lVal, 12);
    float number = 0.25F;
    m_source.vt = VT_R4 | VT_BYREF;
    m_source.pfltVal = &number;
    ASSERT_EQ(convert(VT_R8), S_OK);
    EXPECT_EQ(m_target.dblVal, 0.25);
}

} // namespace
} // namespace tarvo::platform
