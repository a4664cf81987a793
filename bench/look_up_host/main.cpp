// Counts the requests of a look-up by an object that has done one before, of a name below
// "bench.example"; see RequestCount.h.

#include "ZelBase/Handles.h"
#include "bench/LateBound.h"
#include "bench/RequestCount.h"

#include <ocidl.h>

using bench::LateBound;
using tervane::Variant;

namespace {

void Require(bool held) {
    if (!held) {
        bench::Fail("looking a name up", E_UNEXPECTED);
    }
}

// Sets an event when it is told of one; lives as long as the program.
class EndOfWork final : public IDispatch {
public:
    void Await() const { Require(WaitForSingleObject(told_.Get(), 60000) == WAIT_OBJECT_0); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
        *out = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        Require(arguments->cArgs == 1 && arguments->rgvarg[0].lVal != 0);
        SetEvent(told_.Get());
        return S_OK;
    }

private:
    const ZelBase::UniqueHandle told_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

void Advise(const LateBound& object, IUnknown* sink) {
    tervane::ComPtr<IConnectionPointContainer> container;
    tervane::ComPtr<IEnumConnectionPoints> points;
    tervane::ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    Require(SUCCEEDED(object.AsValue().Get().pdispVal->QueryInterface(
                IID_IConnectionPointContainer, reinterpret_cast<void**>(container.Put()))) &&
            SUCCEEDED(container->EnumConnectionPoints(points.Put())) &&
            points->Next(1, point.Put(), nullptr) == S_OK &&
            SUCCEEDED(point->Advise(sink, &cookie)));
}

} // namespace

int main() {
    if (FAILED(CoInitialize(nullptr))) {
        return 1;
    }
    {
        static EndOfWork end;
        const LateBound tester(L"Tervane.ConnectivityTester");
        Advise(tester, &end);
        const Variant timeout = Variant::FromLong(5000);
        for (const wchar_t* text : {L"first.bench.example", L"second.bench.example"}) {
            const auto name = Variant::FromText(text);
            if (text[0] == L's') {
                bench::MarkRequests({"the second DNSLookup of an object", 1, 350, 0});
            }
            tester.Call(L"DNSLookup", {&*name, &timeout});
            end.Await();
        }
        bench::MarkEndOfRequests();
    }
    CoUninitialize();
}
