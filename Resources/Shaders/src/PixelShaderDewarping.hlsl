// The rectilinear view: what an ordinary camera would see in one direction of the fisheye picture.

#include "Dewarp.hlsli"

// The cosine from the sine, never negative: graphics hardware was seen to be more precise that way. An angle
// beyond a right one behaves as its mirror, which is accepted.
float cosineFromSine(float sine)
{
    return sqrt(max(0, 1 - sine * sine));
}

// The ray of a place `separation` pixels from the view's centre. All distances are taken relative to the
// input's size, which the field of view refers to, whatever the size of the output.
Ray viewRay(float2 separation)
{
    Ray ray;
    ray.theta = arcTangent(length(separation) / (size.y * 0.5) * tangentOfFieldOfView, 1);
    ray.lambda = lambdaOffset - arcTangent(separation.y, -separation.x);
    return ray;
}

// Turns the view's ray into the lens' own frame: about x, then y, as a vector, and about z by adding to the
// azimuth.
Ray rotate(Ray ray)
{
    const float sinTheta = sin(ray.theta);
    float3 d = float3(sinTheta * cos(ray.lambda), sinTheta * sin(ray.lambda), cosineFromSine(sinTheta));
    if (rotateData.x != 0)
    {
        const float s = sin(rotateData.x);
        const float c = cosineFromSine(s);
        d = float3(d.x, d.y * c + d.z * s, d.z * c - d.y * s);
    }
    if (rotateData.y != 0)
    {
        const float s = sin(rotateData.y);
        const float c = cosineFromSine(s);
        d = float3(d.x * c + d.z * s, d.y, d.z * c - d.x * s);
    }
    Ray rotated;
    rotated.theta = polarAngle(d);
    rotated.lambda = arcTangent(d.y, d.x) + rotateData.z;
    return rotated;
}

float4 main(Pixel pixel) : SV_TARGET
{
    const float2 separation = pixel.texcoord * size - size * 0.5;
    return sampleInputOr(clearColor, imagePoint(rotate(viewRay(separation))));
}
