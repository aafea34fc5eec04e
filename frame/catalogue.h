// The list of the library's classes that clients can reach through the
// registry, with their instancing. Registration and the class factories read
// it; adding a class to the library means adding one line to TOVA_CLASSES.
#pragma once

#include "object.h"

namespace tova {

// name, instancing. Classes that are not creatable are handed out by others and
// have no entry.
#define TOVA_CLASSES(X)           \
    X(Rectangle, Creatable)       \
    X(GDIMethods, Global)         \
    X(APIMethods, Global)         \
    X(StringMethods, Global)      \
    X(SortMethods, Global)        \
    X(DictionaryMethods, Global)  \
    X(EncryptMethods, Global)     \
    X(Rectangles, Creatable)      \
    X(Polygon, Creatable)         \
    X(FileSearch, Creatable)      \
    X(RegistryMethods, Global)    \
    X(MiscMethods, Global)        \
    X(Timer, Creatable)           \
    X(SubclassingMethods, Global) \
    X(MouseTrack, Creatable)      \
    X(SystemVersionInfo, Creatable) \
    X(MouseTrackEx, Creatable)    \
    X(MemoryDC, Creatable)        \
    X(PaintMethods, Global)       \
    X(DIBSection, Creatable)      \
    X(JPEGMethods, Global)        \
    X(AlphaDIBSection, Creatable) \
    X(FileMethods, Global)        \
    X(Tooltip, Creatable)         \
    /* end of the list */

struct ClassEntry {
    const wchar_t* name;
    const CLSID* clsid;
    Instancing instancing;
    HRESULT (*create)(REFIID, void**);
};

// The classes in TOVA_CLASSES order.
const ClassEntry* classEntries(size_t* count);
const ClassEntry* findClass(REFCLSID clsid);

// Each class file defines its creator: HRESULT create<Name>(REFIID, void**).
#define TOVA_DECLARE_CREATOR(name, instancing) HRESULT create##name(REFIID riid, void** ppv);
TOVA_CLASSES(TOVA_DECLARE_CREATOR)
#undef TOVA_DECLARE_CREATOR

// The class factory of a creatable or global class.
HRESULT classFactory(REFCLSID clsid, REFIID riid, void** ppv);

}  // namespace tova
