#pragma once

// The registry for scripts: keys and values by hive number, path and name. A key or value that is
// missing, or refuses the access, gives false, type 0 or an empty array, never an error.

#include "component/Automation.h"

#include <TERVANELib.h>

namespace tervane {

class Registry2 final : public AutomationObject<IRegistry2> {
public:
    Registry2(const ClassRow& row, IUnknown* outer) : Object(row, outer) {}

    HRESULT STDMETHODCALLTYPE DoesKeyExist(short hive, BSTR path, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE DoesValueExist(short hive, BSTR path, BSTR name,
                                             VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetSubKeyNames(short hive, BSTR path, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetValueNames(short hive, BSTR path, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetValueType(short hive, BSTR path, BSTR name, long* result) override;
    HRESULT STDMETHODCALLTYPE GetValue(short hive, BSTR path, BSTR name, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE SetValue(short hive, BSTR path, BSTR name, VARIANT value,
                                       VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE DeleteValue(short hive, BSTR path, BSTR name,
                                          VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE DeleteKey(short hive, BSTR path, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE CreateKey(short hive, BSTR path, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE GetMatchingSubKeys(short hive, BSTR path, BSTR name, BSTR pattern,
                                                 VARIANT* result) override;
};

} // namespace tervane
