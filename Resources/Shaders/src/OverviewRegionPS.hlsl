// The marker of the viewed region in the overview: red, blended by the alpha of its vertices.

#include "Pixel.hlsli"

// Never read and never bound: the marker has one colour.
cbuffer PSConstants : register(b0)
{
    float4 colorInput;
};

float4 main(Pixel pixel) : SV_TARGET
{
    float4 colour = float4(1, 0, 0, 0.5);
    colour.a = pixel.colour;
    return colour;
}
