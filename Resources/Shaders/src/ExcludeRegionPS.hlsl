// The picture with the exclude area painted black.

#include "Pixel.hlsli"

SamplerState sampleType : register(s0);
Texture2D shaderTexture : register(t0);

cbuffer PSConstants : register(b1)
{
    float4 excludeRect; // left, top, right, bottom in texture coordinates
};

float4 main(Pixel pixel) : SV_TARGET
{
    const float2 place = pixel.texcoord;
    // All four edges belong to the area.
    if (place.x >= excludeRect.x && place.x <= excludeRect.z &&
        place.y >= excludeRect.y && place.y <= excludeRect.w)
        return float4(0, 0, 0, 1);
    return shaderTexture.SampleLevel(sampleType, place, 0);
}
