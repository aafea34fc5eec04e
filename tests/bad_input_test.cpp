// Every member of every class the registry can create, called late-bound as a
// careless script would call it: all arguments Empty, Null, 0, -1, the largest
// Long, an empty or a stray String, or Nothing. Each call must come back with
// an HRESULT; the program must neither crash nor hang. Each kind is also
// given to one argument at a time, the others 0.
//
// Left out: members that take a memory address (no library can check one),
// Pause and WaitWithEvents (they wait as long as they are asked to), the sound
// members and beeps (they would play whatever device the machine has) and the members that write files
// or change files and folders (a stray name would leave files in the prefix's
// Windows folder).
#include "support.h"

#include <set>
#include <string>

using namespace test;

namespace {

std::wstring nameOf(ITypeInfo* t, MEMBERID id) {
    BSTR n = nullptr;
    t->GetDocumentation(id, &n, nullptr, nullptr, nullptr);
    std::wstring s = n ? n : L"";
    SysFreeString(n);
    return s;
}

bool takesAddress(const FUNCDESC* f, const std::wstring& name) {
    if (name.find(L"Ptr") != std::wstring::npos) return true;
    for (SHORT i = 0; i < f->cParams; ++i) {
        TYPEDESC t = f->lprgelemdescParam[i].tdesc;
        if (t.vt == VT_PTR) t = *t.lptdesc;
        if (t.vt == VT_I8 || t.vt == VT_UI8 || t.vt == VT_INT_PTR) return true;
    }
    return false;
}

const std::set<std::wstring> kSkipped = {
    L"Pause", L"WaitWithEvents", L"Beep", L"MessageBeep", L"BeginPlaySound", L"CanPlayWaveForms", L"StopSound",
    L"INIWriteString", L"INIWriteSection",
    L"SaveJPG", L"SavePicture",
    // FileMethods' members that change the disk (their own tests give them bad input).
    L"SetFileDate", L"SetAttributes", L"SetReadOnly", L"SetHidden", L"CopyFile", L"MoveFile", L"RenameFile",
    L"DeleteFile", L"CopyFolder", L"MoveFolder", L"RenameFolder", L"DeleteFolder", L"CreateFolder", L"DeleteFiles",
    L"WriteTextFile", L"AppendLine", L"WriteBinaryFile", L"CreateTempFile", L"CreateTempFolder",
    // APIMethods: these start programs ...
    L"RunAndWait", L"RunProcess", L"ShellExecute", L"OpenDocument", L"OpenURL",
    // ... change the registry ...
    L"RegisterServer", L"UnregisterServer",
    // ... or open a dialog that waits for a person (api_shell_tests and
    // api_dialogs_tests give them bad input).
    L"BrowseForFolder", L"GetOpenFileName", L"GetOpenFileNames", L"GetSaveFileName", L"ChooseColor", L"ChooseFont"};

// The argument kinds, one call each with every argument of that kind.
std::vector<Variant> kinds() {
    std::vector<Variant> v(9);
    V_VT(&v[1]) = VT_NULL;
    v[2] = Variant(0L);
    v[3] = Variant(-1L);
    v[4] = Variant(0x7FFFFFFFL);
    v[5] = Variant(L"");
    v[6] = Variant(L"no such thing");
    v[7] = Variant(static_cast<IDispatch*>(nullptr));
    v[8] = Variant(-1e300);
    return v;
}

// Calls every member of `object`'s dispatch interface with every kind of argument.
size_t callEverything(IDispatch* object, ITypeInfo* dispatchInfo, const std::wstring& cls) {
    TYPEATTR* attr = nullptr;
    if (FAILED(dispatchInfo->GetTypeAttr(&attr))) return 0;
    const WORD functions = attr->cFuncs;
    dispatchInfo->ReleaseTypeAttr(attr);
    size_t calls = 0;
    const std::vector<Variant> values = kinds();
    for (WORD k = 0; k < functions; ++k) {
        FUNCDESC* f = nullptr;
        if (FAILED(dispatchInfo->GetFuncDesc(k, &f))) continue;
        const std::wstring name = nameOf(dispatchInfo, f->memid);
        const bool skip = (f->wFuncFlags & FUNCFLAG_FRESTRICTED) || takesAddress(f, name) || kSkipped.count(name);
        const MEMBERID id = f->memid;
        const INVOKEKIND kind = f->invkind;
        const SHORT params = f->cParams;
        dispatchInfo->ReleaseFuncDesc(f);
        if (skip) continue;
        // Every argument of one kind, then each argument alone of that kind
        // with 0 for the others.
        const Variant zero(0L);
        for (size_t call = 0; call < values.size() * static_cast<size_t>(params + 1); ++call) {
            const Variant& value = values[call % values.size()];
            const size_t odd = call / values.size();  // 0: all of them; p: argument p alone
            std::vector<VARIANT> args(static_cast<size_t>(params));
            for (size_t a = 0; a < args.size(); ++a)  // shallow: `values` and `zero` own them
                args[a] = odd == 0 || odd == a + 1 ? static_cast<const VARIANT&>(value) : static_cast<const VARIANT&>(zero);
            DISPPARAMS dp{args.data(), nullptr, static_cast<UINT>(params), 0};
            DISPID put = DISPID_PROPERTYPUT;
            WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
            if (kind == INVOKE_PROPERTYPUT || kind == INVOKE_PROPERTYPUTREF) {
                flags = kind == INVOKE_PROPERTYPUT ? DISPATCH_PROPERTYPUT : DISPATCH_PROPERTYPUTREF;
                dp.rgdispidNamedArgs = &put;
                dp.cNamedArgs = 1;
            }
            Variant result;
            EXCEPINFO excep{};
            UINT argErr = 0;
            SCOPED_TRACE(testing::Message() << std::string(cls.begin(), cls.end()) << "."
                                            << std::string(name.begin(), name.end()) << " with kind "
                                            << call % values.size() << " in argument " << odd);
            object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &dp, &result, &excep, &argErr);
            SysFreeString(excep.bstrSource);
            SysFreeString(excep.bstrDescription);
            SysFreeString(excep.bstrHelpFile);
            ++calls;
        }
    }
    return calls;
}

}  // namespace

TEST(BadInput, EveryMemberOfEveryClassSurvivesOddArguments) {
    wchar_t path[MAX_PATH];
    ASSERT_TRUE(GetModuleFileNameW(library(), path, MAX_PATH));
    ComPtr<ITypeLib> lib;
    ASSERT_EQ(S_OK, LoadTypeLibEx(path, REGKIND_NONE, lib.put()));
    size_t calls = 0, classes = 0;
    for (UINT i = 0, n = lib->GetTypeInfoCount(); i < n; ++i) {
        ComPtr<ITypeInfo> coclass;
        TYPEATTR* attr = nullptr;
        if (FAILED(lib->GetTypeInfo(i, coclass.put())) || FAILED(coclass->GetTypeAttr(&attr))) continue;
        const bool creatable = attr->typekind == TKIND_COCLASS && (attr->wTypeFlags & TYPEFLAG_FCANCREATE);
        const CLSID clsid = attr->guid;
        coclass->ReleaseTypeAttr(attr);
        if (!creatable) continue;
        ComPtr<IDispatch> object = create<IDispatch>(clsid, IID_IDispatch);
        const std::wstring cls = nameOf(coclass.get(), MEMBERID_NIL);
        if (!object) continue;  // interfaces clients implement have no factory
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()));
        // The dispatch view of a dual interface lists the members as a client calls them.
        HREFTYPE ref = 0;
        ComPtr<ITypeInfo> dispatchInfo = info;
        if (SUCCEEDED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &ref)))
            info->GetRefTypeInfo(ref, dispatchInfo.put());
        calls += callEverything(object.get(), dispatchInfo.get(), cls);
        ++classes;
    }
    std::printf("%zu classes, %zu calls\n", classes, calls);
    EXPECT_GE(classes, 15u);
    EXPECT_GT(calls, 1000u);
}
