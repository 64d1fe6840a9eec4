// Pictures made from tables instead of a lens: each table says, over a grid, where in the input to look and
// how much that counts. The tables lie one below the other in one texture: red and green the place, blue the
// weight.

#include "Pixel.hlsli"

SamplerState sampleType : register(s0);
Texture2D inputTexture : register(t0);
Texture2D lookupTexture : register(t4);

// Asks for what is inside, so that a position which is no number counts as outside.
bool isInUnitSquare(float2 position)
{
    return position.x >= 0 && position.y >= 0 && position.x <= 1 && position.y <= 1;
}

// The weighted sum of what the tables find at a place, 0 to 1 over the grid.
//
// `rectangle` maps the place between the centres of the outermost cells of one table: beyond those, filtering
// would mix a table with its neighbour in the texture. At most 8 tables count, which keeps the loop unrolled;
// without any the result is black.
float4 weightedSum(float2 place, float4 rectangle, uint numberOfTables, float tableHeight)
{
    float2 cell = place * rectangle.zw + rectangle.xy;
    cell.y /= max(numberOfTables, 1);
    float4 colour = float4(0, 0, 0, 1);
    [unroll(8)] for (uint table = 0; table < 8; ++table)
    {
        if (table < numberOfTables)
        {
            // Both textures have a single level; asked for by number, it needs no gradients, which are
            // undefined in a branch.
            const float3 entry = lookupTexture.SampleLevel(sampleType, cell, 0).xyz;
            // The weights count for alpha too, which so grows beyond 1; the target saturates it.
            colour += entry.z * inputTexture.SampleLevel(sampleType, entry.xy, 0);
            cell.y += tableHeight;
        }
    }
    return colour;
}
