// Factories of the character classes that the dictionary builds from
// definition tags, one per class, so that GCharacter::Init's table names a
// function and each class is wired in by a single line of GCharacterFactory.cpp.
#ifndef ZEL_DISPLAY_GCHARACTERFACTORY_H
#define ZEL_DISPLAY_GCHARACTERFACTORY_H

class BChar;

// Each returns a new, empty character (null when memory ran out).
BChar* NewShapeChar();
BChar* NewMorphChar();
BChar* NewSpriteChar();
BChar* NewFontChar();
BChar* NewTextChar();
BChar* NewEditTextChar();
BChar* NewButtonChar();

#endif
