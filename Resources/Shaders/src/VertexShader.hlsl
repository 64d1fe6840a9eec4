// The vertex program of every pass.

#include "Pixel.hlsli"

cbuffer cbPerObject : register(b0)
{
    float4x4 WVP; // columns as stored; it mirrors y, since pictures count their rows downward
};

struct Vertex
{
    float4 position : POSITION; // only x and y count: everything is drawn flat
    float colour : COLOR;
    float2 texcoord : TEXCOORD;
};

Pixel main(Vertex vertex)
{
    Pixel pixel;
    pixel.position = mul(float4(vertex.position.xy, 0, 1), WVP);
    pixel.colour = vertex.colour;
    pixel.texcoord = vertex.texcoord;
    return pixel;
}
