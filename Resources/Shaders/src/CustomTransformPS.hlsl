// The custom view with digital zoom: a cut-out of the tables' grid, letter-boxed to keep the grid's aspect.

#include "LookupTables.hlsli"

cbuffer PSConstants : register(b4)
{
    float4 lookupRectangle; // offset and extent of one table between the centres of its outermost cells
    float4 viewRect;        // offset and extent of the cut-out
    float4 projectionRect;  // offset and extent of the picture with its black bars
    uint numberOfTables;
    float tableHeight;      // 1 / numberOfTables
};

float4 main(Pixel pixel) : SV_TARGET
{
    float2 place = pixel.texcoord * viewRect.zw + viewRect.xy;
    place = place * projectionRect.zw + projectionRect.xy;
    if (isInUnitSquare(place))
        return weightedSum(place, lookupRectangle, numberOfTables, tableHeight);
    return float4(0, 0, 0, 1);
}
