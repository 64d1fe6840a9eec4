// Three planes to RGB, full-range luma. The planes come in the order of a YV12 buffer, Y, V, U: what is
// called u here holds the red difference and v the blue one.

#include "Pixel.hlsli"

SamplerState sampleType : register(s0);
Texture2D yTexture : register(t0);
Texture2D uTexture : register(t1);
Texture2D vTexture : register(t2);

float4 main(Pixel pixel) : SV_TARGET
{
    const float y = yTexture.SampleLevel(sampleType, pixel.texcoord, 0).r;
    const float u = uTexture.SampleLevel(sampleType, pixel.texcoord, 0).r - 0.5;
    const float v = vTexture.SampleLevel(sampleType, pixel.texcoord, 0).r - 0.5;
    // Not clamped: the target saturates.
    return float4(y + 1.370705 * u, y - 0.698001 * u - 0.337633 * v, y + 1.732446 * v, 1);
}
