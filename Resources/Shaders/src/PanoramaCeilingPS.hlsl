// The panorama of a camera on a ceiling, in two strips one above the other: the horizon at the top of each,
// the floor towards its lower edge. The lens looks straight down, so the strip's angles are the lens' own.

#include "Dewarp.hlsli"

float4 main(Pixel pixel) : SV_TARGET
{
    const float panOffset = panoramaRectAngles.x;
    const float width = panoramaRectAngles.z;
    const float height = panoramaRectAngles.w;

    float y = pixel.texcoord.y;
    float start = panOffset - 0.5 * pi;
    if (y > 0.5)
    {
        // The lower strip goes on where the upper one ends.
        y -= 0.5;
        start += width;
    }
    Ray ray;
    ray.theta = 0.5 * pi - y * (2 * height);
    ray.lambda = start + pixel.texcoord.x * width;
    return sampleInputOr(float4(0, 0, 0, 1), imagePoint(ray));
}
