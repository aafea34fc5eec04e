// Prints the member reference of a type library as Markdown: the library is the
// one source of truth, so the page cannot drift from what callers really load.
//   typelib_reference DLL_OR_TLB > docs/reference.md
#include "frame/type_desc.h"
#include "frame/values.h"

#include <fcntl.h>
#include <io.h>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

using tova::Bstr;
using tova::ComPtr;
using tova::FuncDesc;
using tova::TypeAttr;
using tova::VarDesc;

std::string utf8(const wchar_t* s) {
    if (!s || !*s) return {};
    int n = WideCharToMultiByte(CP_UTF8, 0, s, -1, nullptr, 0, nullptr, nullptr);
    std::string out(n - 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, s, -1, &out[0], n, nullptr, nullptr);
    return out;
}

// Help strings go into table cells: a bar would split the cell.
std::string cell(std::string s) {
    for (size_t i = 0; (i = s.find('|', i)) != std::string::npos; i += 2) s.replace(i, 1, "\\|");
    return s;
}

// Markdown renderers make a heading's anchor lower case.
std::string link(const std::string& name) {
    std::string a = name;
    for (auto& c : a) c = (char)tolower((unsigned char)c);
    return "[" + name + "](#" + a + ")";
}

std::string out;
void put(const std::string& s) { out += s; }

struct Doc { std::string name, help; };
Doc doc(ITypeInfo* ti, MEMBERID id = MEMBERID_NIL) {
    Bstr name, help;
    ti->GetDocumentation(id, name.put(), help.put(), nullptr, nullptr);
    return {utf8(name.get()), utf8(help.get())};
}

bool win64 = false;
std::string libName;

ComPtr<ITypeInfo> refInfo(ITypeInfo* ti, HREFTYPE ref) {
    ComPtr<ITypeInfo> r;
    ti->GetRefTypeInfo(ref, r.put());
    return r;
}

std::string typeName(ITypeInfo* ti, const TYPEDESC& t) {
    // VT_UI2 is a VARTYPE, which callers pass as an Integer.
    static const std::map<VARTYPE, const char*> simple = {
        {VT_I4, "Long"}, {VT_INT, "Long"}, {VT_I2, "Integer"}, {VT_UI2, "Integer"}, {VT_BOOL, "Boolean"},
        {VT_BSTR, "String"}, {VT_R8, "Double"}, {VT_R4, "Single"}, {VT_UI1, "Byte"}, {VT_VARIANT, "Variant"},
        {VT_DISPATCH, "Object"}, {VT_UNKNOWN, "Unknown"}, {VT_CY, "Currency"}, {VT_DATE, "Date"}};
    if (auto it = simple.find(t.vt); it != simple.end()) return it->second;
    switch (t.vt) {
    // Only pointer-sized members are 64-bit integers, and only in the 64-bit build.
    case VT_I8: return win64 ? "LongPtr" : "LongLong";
    case VT_VOID: case VT_HRESULT: return "";
    case VT_PTR: return typeName(ti, *t.lptdesc);
    case VT_SAFEARRAY: return typeName(ti, *t.lptdesc) + "()";
    case VT_USERDEFINED:
        if (ComPtr<ITypeInfo> r = refInfo(ti, t.hreftype)) return doc(r.get()).name;
        return "?";
    default: return "VT " + std::to_string(t.vt);
    }
}

// A pointer to an interface is how an object travels by value; only a further
// pointer (or a pointer to anything else) makes a parameter by-reference.
bool byRef(ITypeInfo* ti, const TYPEDESC& t) {
    if (t.vt != VT_PTR) return false;
    const TYPEDESC& in = *t.lptdesc;
    if (in.vt != VT_USERDEFINED) return true;
    ComPtr<ITypeInfo> r = refInfo(ti, in.hreftype);
    if (!r) return true;
    TypeAttr a(r.get());
    if (!a.attr) return true;
    TYPEKIND k = a.attr->typekind;
    bool object = k == TKIND_INTERFACE || k == TKIND_DISPATCH || k == TKIND_COCLASS;
    if (k == TKIND_ALIAS) {  // an alias (as stdole's IPictureDisp) stands for what it names
        TYPEDESC named{};
        named.vt = VT_PTR;
        named.lptdesc = &a.attr->tdescAlias;
        object = !byRef(r.get(), named);
    }
    return !object;
}

std::string text(const VARIANT& v) {
    tova::Variant s;
    if (FAILED(VariantChangeTypeEx(&s, const_cast<VARIANT*>(&v), LOCALE_INVARIANT, 0, VT_BSTR))) return "?";
    return utf8(V_BSTR(&s));
}

// An enumeration's default reads best as the constant's name.
std::string enumConstant(ITypeInfo* ti, const TYPEDESC& t, const VARIANT& v) {
    if (t.vt == VT_PTR) return enumConstant(ti, *t.lptdesc, v);
    if (t.vt != VT_USERDEFINED) return {};
    ComPtr<ITypeInfo> r = refInfo(ti, t.hreftype);
    if (!r) return {};
    TypeAttr a(r.get());
    for (UINT i = 0; a.attr && a.attr->typekind == TKIND_ENUM && i < a.attr->cVars; ++i) {
        VarDesc vd(r.get(), i);
        if (vd.desc && text(*vd.desc->lpvarValue) == text(v)) return doc(r.get(), vd.desc->memid).name;
    }
    return {};
}

std::string defaultValue(ITypeInfo* ti, const TYPEDESC& t, const VARIANT& v) {
    std::string e = enumConstant(ti, t, v);
    if (!e.empty()) return e;
    char buf[32];
    if (v.vt == VT_I4 && v.lVal < -65536) {  // colour flags and masks read as hex
        snprintf(buf, sizeof buf, "&H%08lX", (unsigned long)v.lVal);
        return buf;
    }
    if (v.vt == VT_BOOL) return v.boolVal ? "True" : "False";
    if (v.vt == VT_EMPTY) return "Empty";
    return v.vt == VT_BSTR ? "\"" + text(v) + "\"" : text(v);
}

std::string param(ITypeInfo* ti, const ELEMDESC& e, const std::string& name) {
    const PARAMDESC& p = e.paramdesc;
    std::string s;
    if (p.wParamFlags & PARAMFLAG_FOPT) s += "Optional ";
    s += byRef(ti, e.tdesc) ? "ByRef " : "ByVal ";
    s += name + " As " + typeName(ti, e.tdesc);
    if ((p.wParamFlags & PARAMFLAG_FHASDEFAULT) && p.pparamdescex)
        s += " = " + defaultValue(ti, e.tdesc, p.pparamdescex->varDefaultValue);
    return s;
}

// One member as the caller sees it: its accessors merged, the retval as its result.
struct Member {
    std::string name, help, params, result;
    int invkinds = 0;
};

void describe(ITypeInfo* ti, FUNCDESC* f, Member& m) {
    BSTR raw[64] = {};
    UINT got = 0;
    ti->GetNames(f->memid, raw, 64, &got);
    std::vector<Bstr> names;
    for (UINT i = 0; i < got; ++i) names.push_back(Bstr::attach(raw[i]));
    std::string params, result = typeName(ti, f->elemdescFunc.tdesc);
    int last = f->cParams;
    // A property's assigned value is its type, not one of its parameters.
    if (f->invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) result = typeName(ti, f->lprgelemdescParam[--last].tdesc);
    for (int i = 0; i < last; ++i) {
        const ELEMDESC& e = f->lprgelemdescParam[i];
        if (e.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) { result = typeName(ti, e.tdesc); continue; }
        std::string n = (UINT)i + 1 < got ? utf8(names[i + 1].get()) : "Arg" + std::to_string(i + 1);
        params += (params.empty() ? "" : ", ") + param(ti, e, n);
    }
    // The getter's view of parameters and result wins: it has the retval.
    if (m.params.empty() || (f->invkind & INVOKE_PROPERTYGET)) m.params = params;
    if (m.result.empty() || (f->invkind & INVOKE_PROPERTYGET)) m.result = result;
}

void members(ITypeInfo* ti, bool events) {
    TypeAttr a(ti);
    std::vector<Member> list;
    std::map<MEMBERID, size_t> at;
    for (UINT i = 0; a.attr && i < a.attr->cFuncs; ++i) {
        FuncDesc fd(ti, i);
        FUNCDESC* f = fd.desc;
        // IUnknown's and IDispatch's own members are not this interface's.
        if (!f || ((f->wFuncFlags & FUNCFLAG_FRESTRICTED) && f->memid >= 0x60000000 && f->memid < 0x60020000))
            continue;
        auto it = at.find(f->memid);
        if (it == at.end()) {
            it = at.emplace(f->memid, list.size()).first;
            Doc d = doc(ti, f->memid);
            list.push_back({d.name, d.help});
        }
        Member& m = list[it->second];
        m.invkinds |= f->invkind;
        describe(ti, f, m);
    }
    if (list.empty()) { put("No members.\n\n"); return; }
    put(events ? "| Event | Parameters | Description |\n|---|---|---|\n"
               : "| Member | Kind | Parameters | Result | Description |\n|---|---|---|---|---|\n");
    for (auto& m : list) {
        std::string kind = "method";
        if (!(m.invkinds & INVOKE_FUNC)) {
            kind = "property";
            const char* sep = " ";
            for (auto [bit, word] : {std::pair{INVOKE_PROPERTYGET, "get"}, {INVOKE_PROPERTYPUT, "let"}, {INVOKE_PROPERTYPUTREF, "set"}})
                if (m.invkinds & bit) { kind += sep; kind += word; sep = "/"; }
        }
        std::string params = m.params.empty() ? "—" : m.params, result = m.result.empty() ? "—" : m.result;
        if (events) put("| " + m.name + " | " + params + " | " + cell(m.help) + " |\n");
        else put("| " + m.name + " | " + kind + " | " + params + " | " + result + " | " + cell(m.help) + " |\n");
    }
    put("\n");
}

// A dual interface's vtable half carries the members in slot order.
ComPtr<ITypeInfo> vtableHalf(ITypeInfo* ti, const TYPEATTR* a) {
    HREFTYPE ref;
    ComPtr<ITypeInfo> r;
    if ((a->wTypeFlags & TYPEFLAG_FDUAL) && SUCCEEDED(ti->GetRefTypeOfImplType(-1, &ref))) r = refInfo(ti, ref);
    return r ? r : ComPtr<ITypeInfo>(ti);
}

void coclass(ITypeInfo* ti, const TYPEATTR* a, const Doc& d, std::vector<std::string>& sources) {
    bool global = a->wTypeFlags & TYPEFLAG_FAPPOBJECT, creatable = a->wTypeFlags & TYPEFLAG_FCANCREATE;
    put("### " + d.name + "\n\n" + d.help + "\n\n");
    put(std::string("- ") + (global ? "Global object (its members can be called without a variable)" : creatable ? "Creatable" : "Not creatable (obtained from other members)") + "\n");
    if (global || creatable) put("- ProgID: `" + libName + "." + d.name + "`\n");
    for (UINT i = 0; i < a->cImplTypes; ++i) {
        INT flags = 0;
        HREFTYPE ref;
        ti->GetImplTypeFlags(i, &flags);
        ti->GetRefTypeOfImplType(i, &ref);
        ComPtr<ITypeInfo> r = refInfo(ti, ref);
        if (!r) continue;
        const std::string n = doc(r.get()).name;
        if (!(flags & IMPLTYPEFLAG_FDEFAULT)) continue;
        if (flags & IMPLTYPEFLAG_FSOURCE) { put("- Events: " + link(n) + "\n"); sources.push_back(n); }
        else put("- Default interface: " + link(n) + "\n");
    }
    put("\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) { fprintf(stderr, "usage: typelib_reference DLL_OR_TLB\n"); return 2; }
    _setmode(_fileno(stdout), _O_BINARY);
    std::wstring path(argv[1], argv[1] + strlen(argv[1]));
    ComPtr<ITypeLib> tl;
    HRESULT hr = LoadTypeLibEx(path.c_str(), REGKIND_NONE, tl.put());
    if (FAILED(hr)) { fprintf(stderr, "cannot load the type library of %s: 0x%08lX\n", argv[1], (unsigned long)hr); return 1; }
    TLIBATTR* la = nullptr;
    tl->GetLibAttr(&la);
    win64 = la->syskind == SYS_WIN64;
    Bstr name, help;
    tl->GetDocumentation(-1, name.put(), help.put(), nullptr, nullptr);
    libName = utf8(name.get());
    std::string file = argv[1];
    file = file.substr(file.find_last_of("/\\:") + 1);
    put("# " + libName + " member reference\n\n");
    put("Generated from the type library " + libName + " " + std::to_string(la->wMajorVerNum) + "." +
        std::to_string(la->wMinorVerNum) + " (\"" + utf8(help.get()) + "\") of the " + (win64 ? "64" : "32") + "-bit " + file +
        " by `tools/reference`; do not edit by hand, run `tools/reference.sh`.\n\n");
    put("The 32-bit library is the one most callers load. The 64-bit build's library differs only in members that "
        "carry an address or a message parameter: there they take LongPtr where this page says Long.\n\n");
    tl->ReleaseTLibAttr(la);

    std::string page = out;
    std::vector<std::string> sources;
    const char* titles[] = {"Classes", "Interfaces", "Events", "Enumerations", "Records"};
    std::string sections[5];
    UINT count = tl->GetTypeInfoCount();
    // Coclasses first: they say which dispinterfaces are event interfaces.
    for (int pass = 0; pass < 2; ++pass)
        for (UINT i = 0; i < count; ++i) {
            ComPtr<ITypeInfo> info;
            if (FAILED(tl->GetTypeInfo(i, info.put()))) continue;
            ITypeInfo* ti = info.get();
            TypeAttr attr(ti);
            const TYPEATTR* a = attr.attr;
            if (!a) continue;
            Doc d = doc(ti);
            out.clear();
            int section = -1;
            if (pass == 0 && a->typekind == TKIND_COCLASS) { section = 0; coclass(ti, a, d, sources); }
            else if (pass == 1 && (a->typekind == TKIND_DISPATCH || a->typekind == TKIND_INTERFACE)) {
                bool events = false;
                for (auto& s : sources) events |= s == d.name;
                section = events ? 2 : 1;
                const char* what = events ? "Event interface" : a->wTypeFlags & TYPEFLAG_FDUAL ? "Dual interface" : a->typekind == TKIND_DISPATCH ? "Dispinterface" : "Interface";
                put("### " + d.name + "\n\n*" + what + ".* " + d.help + "\n\n");
                members(vtableHalf(ti, a).get(), events);
            } else if (pass == 1 && (a->typekind == TKIND_ENUM || a->typekind == TKIND_RECORD)) {
                bool e = a->typekind == TKIND_ENUM;
                section = e ? 3 : 4;
                put("### " + d.name + "\n\n" + d.help + "\n\n" + (e ? "| Constant | Value | Description |\n|---|---|---|\n" : "| Field | Type | Description |\n|---|---|---|\n"));
                for (UINT k = 0; k < a->cVars; ++k) {
                    VarDesc vd(ti, k);
                    if (!vd.desc) continue;
                    Doc f = doc(ti, vd.desc->memid);
                    std::string value = e ? text(*vd.desc->lpvarValue) : typeName(ti, vd.desc->elemdescVar.tdesc);
                    put("| " + f.name + " | " + value + " | " + cell(f.help) + " |\n");
                }
                put("\n");
            }
            if (section >= 0) sections[section] += out;
        }
    for (int s = 0; s < 5; ++s)
        if (!sections[s].empty()) page += "## " + std::string(titles[s]) + "\n\n" + sections[s];
    while (page.size() > 1 && page[page.size() - 2] == '\n') page.pop_back();
    fwrite(page.data(), 1, page.size(), stdout);
    return 0;
}
