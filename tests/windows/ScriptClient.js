// A script host's view of the transform: nothing but names. Run by cscript while the module is registered; says what is
// not as it should be, and at the end how many checks there were. The exit status is 0 only if all of them held.
//
// Arrays and arguments that come back are beyond this host (Wine's gives no array of doubles, and JScript has no
// references); tests/transform/windows calls the members that have such.

var checks = 0;
var failures = 0;

var eInvalidArg = 0x80070057 | 0;
var eFail = 0x80004005 | 0;

function check(what, found, expected) {
    ++checks;
    if (found === expected)
        return;
    ++failures;
    WScript.Echo(what + ": " + found + " instead of " + expected);
}

// For numbers that the object keeps in single precision.
function checkNear(what, found, expected) {
    check(what + " is a number", typeof found, "number");
    ++checks;
    if (Math.abs(found - expected) <= 1e-5)
        return;
    ++failures;
    WScript.Echo(what + ": " + found + " instead of " + expected);
}

// The number of the error that an action ends with.
function errorOf(action) {
    try {
        action();
    } catch (error) {
        return error.number;
    }
    return "no error";
}

function checkRectangle(what, rectangle, left, top, right, bottom) {
    checkNear(what + ".Left", rectangle.Left, left);
    checkNear(what + ".Top", rectangle.Top, top);
    checkNear(what + ".Right", rectangle.Right, right);
    checkNear(what + ".Bottom", rectangle.Bottom, bottom);
    checkNear(what + ".Width", rectangle.Width, right - left);
    checkNear(what + ".Height", rectangle.Height, bottom - top);
}

// Each row: name, value at first, value to put, what is there then.
function checkProperties(object, rows) {
    for (var i = 0; i < rows.length; ++i) {
        var name = rows[i][0];
        check(name + " at first", object[name], rows[i][1]);
        object[name] = rows[i][2];
        check(name + " after " + rows[i][2], object[name], rows[i][3]);
    }
}

function checkScalars() {
    checkProperties(new ActiveXObject("TarvoVideoTransform.DewarpingTransform"), [
        ["TiltOrientation", 0, 3, 3],
        ["TiltOrientation", 3, 7, 7],
        ["OutputWidth", 0, 320, 320],
        ["OutputHeight", 0, -240, -240],
        ["OutputFrameRate", 0, 12.5, 12.5],
        ["Bypass", false, true, true],
        ["EffectLevel", 1, 0.5, 0.5],
        ["EffectLevel", 0.5, 1.7, 1],
        ["EffectLevel", 1, -3, 0],
        ["Options", 0, 9, 9],
        ["ViewType", 0, 4, 4],
        ["SelectedView", 0, 2, 2],
        ["PanoramaFieldOfView", 180, 120, 120],
        ["PanoramaFieldOfView", 120, 0.2, 1],
        ["PanoramaPanOffset", -90, -60.5, -60.5],
        ["CustomTransformControlType", 0, 1, 1]
    ]);
    // A wall camera's, as long as no output size is known.
    checkProperties(new ActiveXObject("TarvoVideoTransform.DewarpingTransform.1"), [
        ["Pan", 0, 11, 11],
        ["Pan", 11, 200, 90],
        ["Tilt", 0, -12.5, -12.5],
        ["FieldOfView", 30, 13.25, 13.25],
        ["FieldOfView", 13.25, 1, 2]
    ]);
}

function checkErrors() {
    var transform = new ActiveXObject("TarvoVideoTransform.DewarpingTransform");
    check("negative rate", errorOf(function () { transform.OutputFrameRate = -0.5; }), eInvalidArg);
    check("view type 6", errorOf(function () { transform.ViewType = 6; }), eInvalidArg);
    check("view type -1", errorOf(function () { transform.ViewType = -1; }), eInvalidArg);
    check("view 5", errorOf(function () { transform.SelectedView = 5; }), eInvalidArg);
    check("control type 2", errorOf(function () { transform.CustomTransformControlType = 2; }), eInvalidArg);
    check("rate after all", transform.OutputFrameRate, 0);
    check("view type after all", transform.ViewType, 0);
    check("view after all", transform.SelectedView, 0);
    check("control type after all", transform.CustomTransformControlType, 0);
    check("a member that is read only",
        typeof errorOf(function () { transform.HardwareAccelerationActive = false; }), "number");
    check("a name that there is not", typeof errorOf(function () { transform.Zoom = 1; }), "number");
    check("a text for a number", typeof errorOf(function () { transform.Pan = "left"; }), "number");
    check("an unknown class", typeof errorOf(function () { new ActiveXObject("TarvoVideoTransform.None"); }), "number");
}

function checkPosition() {
    var transform = new ActiveXObject("TarvoVideoTransform.DewarpingTransform");
    transform.SetPTZPosition(5, -6, 20, false);
    transform.SetPTZPosition(1, 2, -3, true);
    checkNear("Pan", transform.Pan, 6);
    checkNear("Tilt", transform.Tilt, -4);
    checkNear("FieldOfView", transform.FieldOfView, 17);
    // A selected view is put where it is told, the main one stays.
    transform.ViewType = 1;
    transform.Pan = 30;
    transform.SelectedView = 2;
    checkNear("Pan of the second view", transform.Pan, 75);
    transform.Pan = 100;
    checkNear("Pan of the second view", transform.Pan, 100);
    transform.SelectedView = 0;
    checkNear("Pan of the main view", transform.Pan, 30);
    // Names are the same in capitals.
    checkNear("PAN", transform.PAN, 30);
}

function checkCapability() {
    var transform = new ActiveXObject("TarvoVideoTransform.DewarpingTransform");
    check("CheckDewarpingCapability", typeof transform.CheckDewarpingCapability(), "boolean");
    check("HardwareAccelerationActive", transform.HardwareAccelerationActive, true);
}

function checkRectangles() {
    var transform = new ActiveXObject("TarvoVideoTransform.DewarpingTransform");
    checkRectangle("ExcludeRect", transform.ExcludeRect, 0, 0, 0, 0);
    var exclude = transform.ExcludeRect;
    exclude.Init(0.25, 0.25, 0.5, 0.5);
    exclude.Right = 0.75;
    checkRectangle("ExcludeRect", transform.ExcludeRect, 0.25, 0.25, 0.75, 0.5);
    exclude.OffsetRect(0.125, 0.25);
    checkRectangle("ExcludeRect", transform.ExcludeRect, 0.375, 0.5, 0.875, 0.75);
    exclude.InflateRect(0.125, 0.125);
    checkRectangle("ExcludeRect", transform.ExcludeRect, 0.25, 0.375, 1, 0.875);
    exclude.DeflateRect(0.25, 0.125);
    checkRectangle("ExcludeRect", transform.ExcludeRect, 0.5, 0.5, 0.75, 0.75);

    var view = transform.CustomTransformViewRect;
    checkRectangle("CustomTransformViewRect", view, 0, 0, 1, 1);
    view.Left = 0.5;
    view.Top = 0.25;
    view.Bottom = 0.75;
    checkRectangle("CustomTransformViewRect", transform.CustomTransformViewRect, 0.5, 0.25, 1, 0.75);
    checkRectangle("ViewRect", transform.CustomTransformControl.ViewRect, 0.5, 0.25, 1, 0.75);

    transform.CustomTransformControlType = 1;
    check("the view rectangle of another control", errorOf(function () { return transform.CustomTransformViewRect; }),
        eFail);
    transform = null;
    // It may be kept longer than the transform.
    checkNear("Left of what was kept", view.Left, 0.5);
}

function checkVirtualPtz() {
    var transform = new ActiveXObject("TarvoVideoTransform.DewarpingTransform");
    transform.CustomTransformControlType = 1;
    var control = transform.CustomTransformControl;
    checkProperties(control, [
        ["PanoramaHorizontalFieldOfView", 180, 360, 360],
        ["PanoramaVerticalFieldOfView", 90, 180, 180],
        ["CameraPitch", 0, 3.5, 3.5],
        ["CameraRoll", 0, -2.5, -2.5],
        ["EffectLevel", 1, 2, 1],
        ["EffectLevel", 1, 0.5, 0.5],
        ["FieldOfView", 90, 200, 120],
        ["FieldOfView", 120, 1, 5],
        ["Pan", 0, 20, 20],
        ["Tilt", 0, -10, -10],
        ["UseStrictBorderMode", false, true, true]
    ]);
    check("Pan of the same control", transform.CustomTransformControl.Pan, 20);
}

try {
    checkScalars();
    checkErrors();
    checkPosition();
    checkCapability();
    checkRectangles();
    checkVirtualPtz();
} catch (error) {
    ++failures;
    WScript.Echo("ended by " + error.number + ": " + error.message);
}
WScript.Echo(checks + " checks, " + failures + " failed");
WScript.Quit(failures === 0 ? 0 : 1);
