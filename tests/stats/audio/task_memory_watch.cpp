#include "tests/stats/audio/task_memory_watch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

#include <atomic>

namespace {

// COM's interfaces have no virtual destructor: it would take slots of the method table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class Spy final : public IMallocSpy {
public:
    std::atomic<std::size_t> allocated{0};
    std::atomic<std::size_t> freed{0};

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) noexcept override {
        if (iid != __uuidof(IUnknown) && iid != __uuidof(IMallocSpy)) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = static_cast<IMallocSpy*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }

    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) noexcept override { return size; }
    LPVOID STDMETHODCALLTYPE PostAlloc(LPVOID block) noexcept override {
        allocated += block != nullptr ? 1 : 0;
        return block;
    }
    LPVOID STDMETHODCALLTYPE PreFree(LPVOID block, BOOL spied) noexcept override {
        freed += block != nullptr && spied != FALSE ? 1 : 0;
        return block;
    }
    void STDMETHODCALLTYPE PostFree(BOOL /*spied*/) noexcept override {}
    SIZE_T STDMETHODCALLTYPE PreRealloc(LPVOID block,
                                        SIZE_T size,
                                        LPVOID* newBlock,
                                        BOOL /*spied*/) noexcept override {
        *newBlock = block;
        return size;
    }
    LPVOID STDMETHODCALLTYPE PostRealloc(LPVOID block, BOOL /*spied*/) noexcept override { return block; }
    LPVOID STDMETHODCALLTYPE PreGetSize(LPVOID block, BOOL /*spied*/) noexcept override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL /*spied*/) noexcept override { return size; }
    LPVOID STDMETHODCALLTYPE PreDidAlloc(LPVOID block, BOOL /*spied*/) noexcept override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(LPVOID /*block*/, BOOL /*spied*/, int actual) noexcept override {
        return actual;
    }
    void STDMETHODCALLTYPE PreHeapMinimize() noexcept override {}
    void STDMETHODCALLTYPE PostHeapMinimize() noexcept override {}
};

#pragma GCC diagnostic pop

Spy spy;

}  // namespace

TaskMemoryWatch::TaskMemoryWatch() {
    spy.allocated = 0;
    spy.freed = 0;
    EXPECT_EQ(CoRegisterMallocSpy(&spy), S_OK);
}

TaskMemoryWatch::~TaskMemoryWatch() {
    CoRevokeMallocSpy();
}

std::size_t TaskMemoryWatch::allocated() const {
    return spy.allocated;
}

std::size_t TaskMemoryWatch::freed() const {
    return spy.freed;
}
