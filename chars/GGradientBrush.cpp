// GGradientBrush: a gradient FILLSTYLE becomes a gradient fill record: the
// gradient matrix (translations turned into pixels), the entry count and the
// entries, in one block.
#include "chars/GGradientBrush.h"

#include "display/GDictionary.h"
#include "parse/GParser.h"

int GGradientBrush::ScanSWFFile(GParser* p, GDictionary* dict, int hasAlpha) {
    record = nullptr;
    GError* errors = dict ? dict->error : nullptr;
    GMatrix gm;
    if (p->ScanSWFMatrix(&gm, errors)) {
        // The whole byte is the count: no bits are masked and no cap applies.
        int count = static_cast<int>(p->ScanUI8());
        if (!p->error) {
            _GSWFGRADIENTBRUSH* g =
                static_cast<_GSWFGRADIENTBRUSH*>(tovMalloc(_GSWFGRADIENTBRUSH::SizeFor(count)));
            if (g) {
                tovMemSet(g, 0, sizeof(_GSWFGRADIENTBRUSH));
                _GGRADIENT* entries = g->Entries();
                int read = 0;
                while (read < count && p->ScanGradient(entries[read], hasAlpha, errors)) ++read;
                if (read == count) {
                    g->type = type;
                    g->count = count;
                    g->SetGradientMatrix(gm);
                    record = g;
                    return 1;
                }
                tovFree(g);
            }
        }
    }
    if (dict) dict->PushError(kErrGradientBrush);
    return 0;
}
