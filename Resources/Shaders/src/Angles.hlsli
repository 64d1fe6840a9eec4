// Inverse trigonometry that is exact to single precision and has a value for every argument.
//
// The built-in acos and atan2 are short polynomials with errors of up to 7e-5 radians, which is a tenth of a
// pixel near the rim of a large fisheye picture, and atan2(0, 0) is no number.

static const float pi = 3.14159265;

// Arc tangent of 0 to 1, good to 2e-8: formula 4.4.49 of Abramowitz and Stegun.
float arcTangentOfUnit(float x)
{
    const float s = x * x;
    float sum = 0.0028662257;
    sum = sum * s - 0.0161657367;
    sum = sum * s + 0.0429096138;
    sum = sum * s - 0.0752896400;
    sum = sum * s + 0.1065626393;
    sum = sum * s - 0.1420889944;
    sum = sum * s + 0.1999355085;
    sum = sum * s - 0.3333314528;
    return x + x * s * sum;
}

// The angle of (x, y) against the x axis, -pi to pi. The origin has no direction; it is given that of the
// axis.
float arcTangent(float y, float x)
{
    const float larger = max(abs(x), abs(y));
    // Nothing is ever divided by zero, so that no choice below has to throw a not-a-number away.
    float angle = arcTangentOfUnit(min(abs(x), abs(y)) / (larger > 0 ? larger : 1));
    angle = abs(y) > abs(x) ? 0.5 * pi - angle : angle;
    angle = x < 0 ? pi - angle : angle;
    return y < 0 ? -angle : angle;
}

// The angle between a direction and the z axis, 0 to pi: the arc cosine of z for a unit vector. Taken from
// both legs of the triangle, it neither minds a z that rounding has left a hair beyond 1, nor does it lose
// half its digits near the axis, where the cosine hardly changes.
float polarAngle(float3 direction)
{
    return arcTangent(length(direction.xy), direction.z);
}

// Arc sine of what should lie within -1 to 1, but for rounding.
float arcSine(float x)
{
    const float sine = clamp(x, -1, 1);
    return arcTangent(sine, sqrt((1 - sine) * (1 + sine)));
}
