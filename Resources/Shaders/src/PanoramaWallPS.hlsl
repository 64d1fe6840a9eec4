// The panorama of a camera on a wall: azimuth along x, elevation along y. The lens looks along the horizon.

#include "Dewarp.hlsli"

float4 main(Pixel pixel) : SV_TARGET
{
    const float panOffset = panoramaRectAngles.x;
    const float width = panoramaRectAngles.z;
    const float height = panoramaRectAngles.w;

    // The strip fills the half of y that one of two strips would have, hence the half and twice the height.
    const float polar = 0.5 * pi - 0.5 * height + 0.5 * pixel.texcoord.y * (2 * height);
    // Azimuths beyond the half circle in front of the wall are shown all the same: the lens may see there.
    const float azimuth = pixel.texcoord.x * width + panOffset + 0.5 * pi;

    const float3 upright = float3(sin(polar) * cos(azimuth), sin(polar) * sin(azimuth), cos(polar));
    // From the upright strip into the frame of the lens: a quarter turn about x and a mirror in the y-z
    // plane.
    const float3 direction = float3(-upright.x, -upright.z, upright.y);

    Ray ray;
    ray.theta = polarAngle(direction);
    ray.lambda = arcTangent(direction.y, direction.x);
    // Deliberately without a test: beyond the frame its edge pixels go on.
    return sampleInput(imagePoint(ray));
}
