// The panorama of a camera on a desk, in two strips one above the other: the horizon at the bottom of each,
// the ceiling towards its upper edge. The lens looks straight up, so its azimuth runs the other way round.

#include "Dewarp.hlsli"

float4 main(Pixel pixel) : SV_TARGET
{
    const float panOffset = panoramaRectAngles.x;
    const float width = panoramaRectAngles.z;
    const float height = panoramaRectAngles.w;

    float y = pixel.texcoord.y;
    float start = -panOffset - 0.5 * pi;
    if (y > 0.5)
        start -= width; // the lower strip goes on where the upper one ends
    else
        y += 0.5;
    Ray ray;
    ray.theta = 0.5 * pi + (y - 1) * (2 * height);
    ray.lambda = start - pixel.texcoord.x * width;
    return sampleInputOr(float4(0, 0, 0, 1), imagePoint(ray));
}
