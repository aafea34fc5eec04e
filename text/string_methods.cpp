// placeholder until the class lands
#include "../frame/library_frame.h"
namespace tova {
HRESULT createStringMethods(REFIID, void** ppv) { if (ppv) *ppv = nullptr; return CLASS_E_CLASSNOTAVAILABLE; }
}
