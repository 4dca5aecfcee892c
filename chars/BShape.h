// BShape: a DefineShape, DefineShape2 or DefineShape3 character. Loading
// reads the bounds and style arrays; the records stay in the movie buffer and
// the shape renderer reads them again at every draw.
#ifndef ZEL_CHARS_BSHAPE_H
#define ZEL_CHARS_BSHAPE_H

#include "chars/GShapeParser.h"
#include "display/BChar.h"

class BShape : public BChar {
public:
    _GSHAPE* shape = nullptr;
    int shapeCount = 0;
    _GRECT bounds = {0, 0, 0, 0};

    using BChar::GetBoundingBox;

    ~BShape() override;
    int LoadSWFFile(void* tag, GDictionary* dict) override;
    void Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) override;
    _GRECT GetBoundingBox(GMatrix* m) override;
};

#endif
