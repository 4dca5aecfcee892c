// The view transform: the fit-inside zoom of the movie into the host's view,
// quarter-turn orientations (0 upright .. 3 three quarter turns) and the
// point helpers around them; GAngleFunction is a whole-degree sine table.
#ifndef ZEL_MATH_GTRANSFORM_H
#define ZEL_MATH_GTRANSFORM_H

#include "math/GMatrix.h"
#include "math/GPoint.h"

class GTransform {
public:
    static unsigned ToRightAngle(int degrees);
    static double GetZoomScale(int w, int h, int viewW, int viewH, unsigned orientation);
    static GMatrix GetTransForm(double scale, unsigned orientation, _GPOINT origin);
    static _GPOINT GetSrcPoint(double scale, unsigned orientation, _GPOINT origin, _GPOINT point);
    static _GPOINT GetOffset(double scale, unsigned orientation, _GPOINT point, _GPOINT target);
};

class GAngleFunction {
public:
    double table[91];

    GAngleFunction();
    // Sine and cosine of whole degrees (fractions dropped), scaled by 32768.
    double Sin(double degrees) const;
    double Cos(double degrees) const;
};

#endif
