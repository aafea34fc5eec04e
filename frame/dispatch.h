// Late binding driven by the library's type information.
//
// The platform's ITypeInfo::Invoke cannot pass records under every runtime and
// rejects Variants passed by reference for typed by-reference parameters, which
// is how script hosts pass plain variables. DispatchTable reads an interface's
// type information once and then, per call: coerces each argument to its declared
// type, fills in declared defaults of omitted optional arguments, passes records
// (also given as arrays of numbers), calls the member through the vtable, writes
// changed by-reference values back into the caller's variables and turns raised
// errors into EXCEPINFO.
#pragma once

#include "values.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace tova {

// The library's own type library, loaded from the module that holds this code.
ITypeLib* typeLibrary();
// Type information of a type in the library.
ComPtr<ITypeInfo> typeInfoOf(REFGUID guid);
// Releases the type library when the module unloads.
void releaseTypeLibrary();

// A resolved automation type of a parameter or result.
struct TypeRef {
    VARTYPE vt = VT_EMPTY;           // VT_I4 ... VT_VARIANT, VT_RECORD, VT_DISPATCH, VT_UNKNOWN, VT_ARRAY|x
    bool byref = false;              // passed as a pointer to the caller's storage
    IID iid = IID_NULL;              // for interface types: the interface to query for
    ComPtr<IRecordInfo> record;      // for VT_RECORD
    ULONG recordSize = 0;
    ULONG flatLongs = 0;             // fields, when every field of the record is a Long
};

struct ParamInfo {
    TypeRef type;
    bool optional = false;
    bool hasDefault = false;
    Variant defaultValue;
};

struct FunctionInfo {
    INVOKEKIND kind = INVOKE_FUNC;
    SHORT vtableOffset = 0;
    CALLCONV callConv = CC_STDCALL;
    std::vector<ParamInfo> params;    // without the result
    bool hasResult = false;
    TypeRef result;
    std::vector<std::wstring> paramNames;  // lower case, for named arguments
};

class DispatchTable {
public:
    // Reads the dual interface `iid` of the library.
    explicit DispatchTable(REFIID iid);
    DispatchTable(const DispatchTable&) = delete;
    DispatchTable& operator=(const DispatchTable&) = delete;

    // The dispatch view of the interface, as IDispatch::GetTypeInfo hands it out.
    ITypeInfo* typeInfo() const { return dispatchInfo_.get(); }

    HRESULT idsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const;
    HRESULT invoke(void* instance, DISPID id, LCID lcid, WORD flags, DISPPARAMS* params,
                   VARIANT* result, EXCEPINFO* excep, UINT* argErr) const;

private:
    struct Member {
        std::wstring name;
        const FunctionInfo* get = nullptr;
        const FunctionInfo* put = nullptr;
        const FunctionInfo* putref = nullptr;
        const FunctionInfo* method = nullptr;
    };

    const Member* member(DISPID id) const;
    Member& memberSlot(DISPID id);

    ComPtr<ITypeInfo> dispatchInfo_;
    std::vector<std::unique_ptr<FunctionInfo>> functions_;
    static constexpr DISPID kDirectIds = 1024;
    std::vector<Member> byId_;                       // small DISPIDs, indexed directly
    std::unordered_map<DISPID, Member> otherIds_;    // the rest
    std::unordered_map<std::wstring, DISPID> byName_;
};

// Lower-cases a member or parameter name for case-insensitive lookup.
std::wstring foldName(const wchar_t* name);

// Fills EXCEPINFO from a member's failure HRESULT and the thread's error info.
void fillExcepInfo(HRESULT hr, EXCEPINFO* excep);

}  // namespace tova
