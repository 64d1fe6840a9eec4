// What the projections of the fisheye picture share: their constants, the lens and the way to the picture.

#include "Angles.hlsli"
#include "Pixel.hlsli"

SamplerState sampleType : register(s0);
Texture2D inputTexture : register(t0);

cbuffer PSConstants : register(b0)
{
    float2 size;                // input width and height, pixels
    float2 imageCenter;         // the lens axis in the input, pixels
    float3 rotateData;          // rotation about x, y and z, radians
    float tangentOfFieldOfView; // of half the vertical view angle
    float3 lensProfile;         // radius = x * theta^3 + y * theta^2 + z * theta, pixels
    float lambdaOffset;         // azimuth offset, radians
    float4 clearColor;          // outside the input
    float4 panoramaRectAngles;  // pan offset, unused, width, height, radians
};

// A viewing ray: theta off the lens axis, lambda around it.
struct Ray
{
    float theta;
    float lambda;
};

// Where the lens images a ray, in pixels of the input. The profile has no constant term: the axis itself
// meets the image centre whatever its azimuth.
float2 imagePoint(Ray ray)
{
    const float radius =
        ((lensProfile.x * ray.theta + lensProfile.y) * ray.theta + lensProfile.z) * ray.theta;
    return imageCenter + radius * float2(cos(ray.lambda), sin(ray.lambda));
}

float4 sampleInput(float2 position)
{
    // The picture has a single level. Asking for it by number leaves out the gradients, which are undefined
    // where neighbouring pixels take different branches.
    return inputTexture.SampleLevel(sampleType, position / size, 0);
}

// The input where it has a picture, `outside` elsewhere. The test asks for what is inside, so that a position
// which is no number fails it.
float4 sampleInputOr(float4 outside, float2 position)
{
    if (position.x >= 0 && position.y >= 0 && position.x < size.x && position.y < size.y)
        return sampleInput(position);
    return outside;
}
