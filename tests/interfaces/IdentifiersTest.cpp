#include "interfaces/TarvoVideoTransform.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

namespace tarvo::interfaces {
namespace {

TEST(Identifiers, areTheOnesThatWereGivenOut) {
    // Hosts are compiled against these.
    EXPECT_EQ(LIBID_TarvoVideoTransformLib,
              (GUID{0xB51CDDBB, 0xA654, 0x460D, {0xBC, 0x40, 0xE0, 0x55, 0x9E, 0x2C, 0xCF, 0x2E}}));
    EXPECT_EQ(CLSID_DewarpingTransform,
              (GUID{0x0ED28648, 0x4566, 0x44E3, {0x90, 0xB0, 0xA3, 0x5A, 0x83, 0x71, 0x12, 0x40}}));
    EXPECT_EQ(CLSID_AcceleratorFilter,
              (GUID{0x97292888, 0xEEB9, 0x4EA3, {0xBE, 0x57, 0xF9, 0x86, 0x51, 0x9A, 0xFA, 0x28}}));
    EXPECT_EQ(IID_IDewarpingTransform,
              (GUID{0x5D12C245, 0xF4EC, 0x469A, {0xBB, 0x89, 0xA5, 0xDD, 0x40, 0xAA, 0xF4, 0x9F}}));
    EXPECT_EQ(IID_IAccelerator,
              (GUID{0xE503AF85, 0x0C71, 0x4E6C, {0x9A, 0xEB, 0x4F, 0x1A, 0x30, 0x6C, 0xB3, 0xE8}}));
    EXPECT_EQ(IID_IRectangle,
              (GUID{0x6A7F9D8C, 0xBF5A, 0x441A, {0xB6, 0xC7, 0xE5, 0x38, 0x7B, 0xEF, 0x44, 0x34}}));
    EXPECT_EQ(IID_IDigitalZoomControl,
              (GUID{0xC5D97B3F, 0xA846, 0x4508, {0xBC, 0x3E, 0x9E, 0xE5, 0xD3, 0xC1, 0xBA, 0xEA}}));
    EXPECT_EQ(IID_IVirtualPtzFromPanoramaControl,
              (GUID{0x1B7C0981, 0x3C98, 0x4249, {0x8B, 0x7C, 0x8D, 0x16, 0x28, 0x5E, 0xCE, 0x22}}));
    EXPECT_EQ(IID_IImageBuffer,
              (GUID{0x87B4211C, 0xDF13, 0x4611, {0x95, 0xE3, 0x4C, 0x7E, 0x16, 0x20, 0xFE, 0x0B}}));
    EXPECT_EQ(DIID_IDewarpingTransformEvents,
              (GUID{0x25CE78FC, 0x1061, 0x4578, {0xA4, 0xB6, 0x36, 0x65, 0xA5, 0x8C, 0x8D, 0x21}}));
    EXPECT_EQ(DIID_IImageSourceEvents,
              (GUID{0x5972F765, 0x480B, 0x4B4C, {0x97, 0x55, 0xEC, 0xFE, 0x00, 0x5A, 0x9F, 0xE8}}));
}

TEST(Identifiers, areDistinct) {
    const std::array identifiers{LIBID_TarvoVideoTransformLib,
                                 CLSID_DewarpingTransform,
                                 CLSID_AcceleratorFilter,
                                 IID_IDewarpingTransform,
                                 IID_IAccelerator,
                                 IID_IRectangle,
                                 IID_IDigitalZoomControl,
                                 IID_IVirtualPtzFromPanoramaControl,
                                 IID_IImageBuffer,
                                 DIID_IDewarpingTransformEvents,
                                 DIID_IImageSourceEvents};
    for (std::size_t i = 0; i < identifiers.size(); ++i) {
        for (std::size_t k = 0; k < i; ++k)
            EXPECT_NE(identifiers[i], identifiers[k]) << i << " and " << k;
    }
}

TEST(Identifiers, areThoseOfTheTypes) {
    EXPECT_EQ(__uuidof(DewarpingTransform), CLSID_DewarpingTransform);
    EXPECT_EQ(__uuidof(AcceleratorFilter), CLSID_AcceleratorFilter);
    EXPECT_EQ(__uuidof(IDewarpingTransform), IID_IDewarpingTransform);
    EXPECT_EQ(__uuidof(IAccelerator), IID_IAccelerator);
    EXPECT_EQ(__uuidof(IRectangle), IID_IRectangle);
    EXPECT_EQ(__uuidof(IDigitalZoomControl), IID_IDigitalZoomControl);
    EXPECT_EQ(__uuidof(IVirtualPtzFromPanoramaControl), IID_IVirtualPtzFromPanoramaControl);
    EXPECT_EQ(__uuidof(IImageBuffer), IID_IImageBuffer);
    EXPECT_EQ(__uuidof(IDewarpingTransformEvents), DIID_IDewarpingTransformEvents);
    EXPECT_EQ(__uuidof(IImageSourceEvents), DIID_IImageSourceEvents);
}

} // namespace
} // namespace tarvo::interfaces
