// GError: the error stack through which every failure of a movie is
// reported as a numeric code. It holds one slot: a new code overwrites the
// previous one, so the host sees the most recent (outermost) failure.
#ifndef ZEL_BASE_GERROR_H
#define ZEL_BASE_GERROR_H

#include <cstdint>

// Every code the engine pushes.
enum GErrorCode : unsigned {
    kErrTableGrow = 0x1,
    kErrDuplicateId = 0x2001,
    kErrNoPlacement = 0x2002,
    kErrUnknownId = 0x2003,
    kErrNotCharacter = 0x2004,
    kErrBadSelector = 0x2005,
    kErrMatrix = 0x2008,
    kErrCxform = 0x2009,
    kErrColor = 0x200A,
    kErrRect = 0x200B,
    kErrGradient = 0x200C,
    kErrPenArray = 0x200D,
    kErrTwipPoint = 0x200E,
    kErrPlaceObject = 0x200F,
    kErrPlaceObject2 = 0x2010,
    kErrRemoveObject = 0x2011,
    kErrRemoveObject2 = 0x2012,
    kErrFont = 0x2013,
    kErrFont2 = 0x2014,
    kErrSolidBrush = 0x2015,
    kErrGradientBrush = 0x2016,
    kErrLoadShape = 0x2018,
    kErrLoadShape2 = 0x2019,
    kErrLoadShape3 = 0x201A,
    kErrLoadFont = 0x201B,
    kErrLoadFont2 = 0x201C,
    kErrLoadText = 0x201D,
    kErrLoadText2 = 0x201E,
    kErrLoadEditText = 0x201F,
    kErrLoadButton = 0x2020,
    kErrLoadButton2 = 0x2021,
    kErrLoadMorph = 0x2022,
    kErrLoadSprite = 0x2023,
};

class GError {
public:
    uint32_t registeredCount = 0;
    unsigned char* registered = nullptr;
    uint32_t* slots = nullptr;
    uint32_t capacity = 0;
    uint32_t count = 0;

    GError() = default;
    ~GError();
    GError(const GError&) = delete;
    GError& operator=(const GError&) = delete;

    int Create() { return 1; }
    int PushError(unsigned code);
    int PushError(unsigned code, char*, char*, char*) { return PushError(code) > 0 ? 1 : 0; }
    int PopError(unsigned& code);
    int PopError(unsigned& code, char*&) { return PopError(code) > 0 ? 1 : 0; }
    void ClearError() { count = 0; }
    unsigned GetErrorNum() const { return count; }
    int RegistError(unsigned code);
};

#endif
