// The one place that names the concrete character classes for the
// dictionary. A kind whose class is not part of the build yet makes a plain
// BChar: its load fails, so the kind's load-failure code is reported.
#include "display/GCharacterFactory.h"

#include <new>

#include "chars/BButton.h"
#include "chars/BEditText.h"
#include "chars/BFont.h"
#include "chars/BMorph.h"
#include "chars/BShape.h"
#include "chars/BSprite.h"
#include "chars/BText.h"

BChar* NewShapeChar() { return new (std::nothrow) BShape; }
BChar* NewMorphChar() { return new (std::nothrow) BMorph; }
BChar* NewSpriteChar() { return new (std::nothrow) BSprite; }
BChar* NewFontChar() { return new (std::nothrow) BFont; }
BChar* NewTextChar() { return new (std::nothrow) BText; }
BChar* NewEditTextChar() { return new (std::nothrow) BEditText; }
BChar* NewButtonChar() { return new (std::nothrow) BButton; }
