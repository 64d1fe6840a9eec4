// Plain copy, scaled to the drawn rectangle.

#include "Pixel.hlsli"

SamplerState sampleType : register(s0);
Texture2D shaderTexture : register(t0);

float4 main(Pixel pixel) : SV_TARGET
{
    return shaderTexture.SampleLevel(sampleType, pixel.texcoord, 0);
}
