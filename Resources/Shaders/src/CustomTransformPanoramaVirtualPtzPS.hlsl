// The custom view as a virtual camera: the tables make a panorama, and a rectilinear view is taken out of it.
//
// Angles are radians; a place of the panorama is (longitude, latitude), latitude downward.

#include "Angles.hlsli"
#include "LookupTables.hlsli"

cbuffer PSConstants : register(b4)
{
    float4 lookupRectangle; // offset and extent of one table between the centres of its outermost cells
    float4 viewRect;        // not read here, as the next
    float4 projectionRect;
    uint numberOfTables;
    float tableHeight;      // 1 / numberOfTables
    float2 inputFov;        // the panorama's horizontal and vertical field of view
    float outputAR;         // output width / height
    float3 panTiltFov;      // a tilt of minus a right angle looks at the floor
    float2 pitchRoll;       // how the camera hung that took the panorama
    float effectLevel;      // 0 shows the panorama as it is, 1 the rectilinear view
};

// The direction that a rectilinear view shows at `place`.
//
// With rho the distance from the view's centre and c = atan(rho), the inverse gnomonic projection is
//     longitude = pan + atan2(x sin c, rho cos t cos c + y sin t sin c)
//     latitude  = asin(y sin c cos t / rho - cos c sin t)
// and since sin c = rho cos c, rho cancels out of both and cos c out of the first. What remains is the same
// for every rho but also has a value in the centre, where rho is 0.
float2 rectilinearDirection(float2 place)
{
    const float scale = 2 * tan(0.5 * panTiltFov.z);
    const float x = (place.x - 0.5) * scale;
    const float y = (place.y - 0.5) * scale / outputAR;
    const float cosC = 1 / sqrt(1 + x * x + y * y);
    const float sinTilt = sin(panTiltFov.y);
    const float cosTilt = cos(panTiltFov.y);
    return float2(panTiltFov.x + arcTangent(x, cosTilt + y * sinTilt),
                  arcSine((y * cosTilt - sinTilt) * cosC));
}

float2 blendedDirection(float2 place)
{
    // The horizontal field of view serves both coordinates, deliberately: the panorama keeps its proportions.
    const float2 flat = (place - 0.5) * inputFov.x / float2(1, outputAR);
    float2 direction = flat;
    if (effectLevel == 1)
        direction = rectilinearDirection(place);
    else if (effectLevel != 0)
        direction = effectLevel * rectilinearDirection(place) + (1 - effectLevel) * flat;
    // The flat share has to follow pan and tilt as well.
    return direction + (1 - effectLevel) * float2(panTiltFov.x, -panTiltFov.y);
}

// Undoes the roll and the pitch of the camera that took the panorama.
float2 straightened(float2 direction)
{
    const float3 d =
        float3(cos(direction.x) * cos(direction.y), sin(direction.x) * cos(direction.y), sin(direction.y));
    const float sinRoll = sin(pitchRoll.y);
    const float cosRoll = cos(pitchRoll.y);
    const float3 r = float3(d.x, d.y * cosRoll - d.z * sinRoll, d.y * sinRoll + d.z * cosRoll);
    const float sinPitch = sin(pitchRoll.x);
    const float cosPitch = cos(pitchRoll.x);
    const float3 p = float3(r.x * cosPitch - r.z * sinPitch, r.y, r.x * sinPitch + r.z * cosPitch);
    return float2(arcTangent(p.y, p.x), arcSine(p.z));
}

float4 main(Pixel pixel) : SV_TARGET
{
    const float2 place = straightened(blendedDirection(pixel.texcoord)) / inputFov + 0.5;
    if (isInUnitSquare(place))
        return weightedSum(place, lookupRectangle, numberOfTables, tableHeight);
    return float4(0, 0, 0, 1);
}
