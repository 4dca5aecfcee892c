// GArray: the one growable array of the engine. It grows by a fixed step
// while small and by half its size once that is larger (see Add), and never
// shrinks; the destroy policy says what RemoveAll does with the elements
// (nothing, tovFree them, or delete them). Elements are moved with memcpy, so
// T must be a plain value or a pointer.
#ifndef ZEL_BASE_GARRAY_H
#define ZEL_BASE_GARRAY_H

#include <climits>
#include <cstdint>
#include <new>

#include "base/Memory.h"

template <class T> struct GDataDestroy {
    static void Destroy(T&) {}
};
template <class T> struct GObjectDestroy {
    static void Destroy(T&) {}
};
template <class T> struct GPointPoolDestroy {
    static void Destroy(T* p) {
        if (p) tovFree(p);
    }
};
template <class T> struct GPointObjectDestroy {
    static void Destroy(T* p) { delete p; }
};

template <class T, class DestroyPolicy> class GArray {
public:
    T* data = nullptr;
    int count = 0;
    int capacity = 0;
    int growBy;

    explicit GArray(int grow = 10) : growBy(grow < 1 ? 10 : grow) {}
    ~GArray() { RemoveAll(); }
    GArray(const GArray&) = delete;
    GArray& operator=(const GArray&) = delete;

    // Appends a copy; 1 on success, 0 (array unchanged) when memory ran out.
    // The storage grows by the fixed step only while the step is at least
    // half the array; beyond that by half the array. A strictly linear step
    // would copy a number of elements quadratic in the array's length (a
    // shape of 60,000 fill styles would move gigabytes); growing
    // geometrically changes no result, only that cost.
    int Add(const T& element) {
        if (count == capacity) {
            int step = growBy > count / 2 ? growBy : count / 2;
            if (capacity > INT_MAX - step) return 0;
            int newCapacity = count + step;
            if (static_cast<size_t>(newCapacity) > SIZE_MAX / sizeof(T)) return 0;
            T* block = static_cast<T*>(tovMalloc(static_cast<size_t>(newCapacity) * sizeof(T)));
            if (!block) return 0;
            // The element may live in the old block: copy it before freeing.
            tovMemCpy(&block[count], &element, sizeof(T));
            if (capacity > 0) {
                tovMemCpy(block, data, static_cast<size_t>(static_cast<unsigned>(capacity)) * sizeof(T));
                tovFree(data);
            }
            data = block;
            capacity = newCapacity;
            ++count;
            return 1;
        }
        tovMemCpy(&data[count], &element, sizeof(T));
        ++count;
        return 1;
    }

    // Makes room for n elements in all, in one block; 1 on success. Arrays
    // filled from a count read from the movie reserve it once (capped by
    // the bytes that can hold it) instead of growing step by step.
    int Reserve(int n) {
        if (n <= capacity) return 1;
        if (static_cast<size_t>(n) > SIZE_MAX / sizeof(T)) return 0;
        T* block = static_cast<T*>(tovMalloc(static_cast<size_t>(n) * sizeof(T)));
        if (!block) return 0;
        if (count > 0) tovMemCpy(block, data, static_cast<size_t>(count) * sizeof(T));
        if (data) tovFree(data);
        data = block;
        capacity = n;
        return 1;
    }

    // Removes element i, moving the later ones down; the policy is not applied.
    void RemoveAt(int i) {
        if (i < 0 || i >= count) return;
        tovMemMove(&data[i], &data[i + 1], static_cast<size_t>(count - i - 1) * sizeof(T));
        --count;
    }

    // Drops the elements from n on without applying the destroy policy (the
    // caller owns them elsewhere) and keeps the storage for reuse.
    void Forget(int n) {
        if (n >= 0 && n < count) count = n;
    }

    // Applies the destroy policy to every element and frees the storage.
    void RemoveAll() {
        for (int i = 0; i < count; ++i) DestroyPolicy::Destroy(data[i]);
        if (data) tovFree(data);
        data = nullptr;
        count = 0;
        capacity = 0;
    }

    T& operator[](int i) { return data[i]; }
    const T& operator[](int i) const { return data[i]; }
    int GetCount() const { return count; }
};

template <class T> using GDataArray = GArray<T, GDataDestroy<T>>;
template <class T> using GPointPoolArray = GArray<T*, GPointPoolDestroy<T>>;
template <class T> using GPointObjectArray = GArray<T*, GPointObjectDestroy<T>>;

#endif
