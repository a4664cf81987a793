#pragma once

// Makes instances of one row of the class table. Its first reference belongs to the module state,
// which caches it; every further one holds the library as an object does. A host may keep a factory
// for a long time without an object, and would call into nothing if COM unloaded us meanwhile.

#include "component/ClassTable.h"

#include <atomic>

#include <unknwn.h>

namespace tervane {

class ClassFactory final : public IClassFactory {
public:
    explicit ClassFactory(const ClassRow& row) noexcept : row_(row) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    ~ClassFactory() = default;

    const ClassRow& row_;
    // The cache's, which does not hold the library: the library holds it.
    std::atomic<ULONG> references_ = 1;
};

} // namespace tervane
