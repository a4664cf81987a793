#pragma once

// Makes instances of one row of the class table. Cached by the module state; holding a factory does
// not keep the library loaded, LockServer does.

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
    std::atomic<ULONG> references_ = 1;
};

} // namespace tervane
