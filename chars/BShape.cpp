// BShape: loads a DefineShape/2/3 tag's bounds and style arrays and keeps a
// pointer to its records, which the shape renderer reads again at every draw.
#include "chars/BShape.h"

#include <new>

#include "display/GDictionary.h"
#include "parse/GParser.h"

BShape::~BShape() { DeleteShapes(shape, shapeCount); }

int BShape::LoadSWFFile(void* tag, GDictionary* dict) {
    if (!tag || !dict) return 0;
    // Every read is bounded by the host's buffer, whatever length the tag
    // declares.
    GParser p;
    p.Init(tag, 0, dict->movieEnd);
    unsigned tagLength = 0;
    unsigned code = GetTypeLen(&p, tagLength);
    p.ScanUI16();
    // Empty or inverted bounds reject the whole shape.
    if (!p.ScanSWFRect(bounds, dict->error) || IsEmptyRect(bounds)) return 0;
    shape = new (std::nothrow) _GSHAPE;
    if (!shape) return 0;
    shape->version = code;
    shape->limit = dict->movieEnd;
    shapeCount = 1;
    p.ScanBrushArray(shape->brushes, dict, code == 32, code == 22 || code == 32);
    int pensRead = p.ScanPenArray(shape->pens, code == 32, dict->error, 0);
    unsigned position = static_cast<unsigned>(p.GetPosition());
    if (pensRead && tagLength > position) {
        shape->records = p.cur + (p.bitPos != 0 ? 1 : 0);
        shape->recordsLength = tagLength - position;
        return 1;
    }
    DeleteShapes(shape, shapeCount);
    shape = nullptr;
    shapeCount = 0;
    return 0;
}

void BShape::Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) {
    if (!shape || !shapeCount) return;
    RenderShapes(stage, actor, ctx, dict, shape, nullptr);
}

_GRECT BShape::GetBoundingBox(GMatrix* m) { return BChar::GetBoundingBox(m, bounds); }
