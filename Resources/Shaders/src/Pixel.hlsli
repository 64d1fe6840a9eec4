// What the rasteriser hands to every pixel program.

struct Pixel
{
    noperspective float4 position : SV_POSITION; // x and y: the pixel's centre in the target, in pixels
    float colour : COLOR;                        // the vertex colour, which only the overview marker reads
    float2 texcoord : TEXCOORD;                  // 0 to 1 across the drawn rectangle, y downward
};
