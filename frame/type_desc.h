// Owners of the descriptions an ITypeInfo lends out: each gives its own back.
#pragma once

#include <oaidl.h>

namespace tova {

struct TypeAttr {
    explicit TypeAttr(ITypeInfo* info) : info_(info) {
        if (FAILED(info->GetTypeAttr(&attr))) attr = nullptr;
    }
    ~TypeAttr() { if (attr) info_->ReleaseTypeAttr(attr); }
    TypeAttr(const TypeAttr&) = delete;
    TypeAttr& operator=(const TypeAttr&) = delete;
    ITypeInfo* info_;
    TYPEATTR* attr = nullptr;
};

struct FuncDesc {
    FuncDesc(ITypeInfo* info, UINT index) : info_(info) {
        if (FAILED(info->GetFuncDesc(index, &desc))) desc = nullptr;
    }
    ~FuncDesc() { if (desc) info_->ReleaseFuncDesc(desc); }
    FuncDesc(const FuncDesc&) = delete;
    FuncDesc& operator=(const FuncDesc&) = delete;
    ITypeInfo* info_;
    FUNCDESC* desc = nullptr;
};

struct VarDesc {
    VarDesc(ITypeInfo* info, UINT index) : info_(info) {
        if (FAILED(info->GetVarDesc(index, &desc))) desc = nullptr;
    }
    ~VarDesc() { if (desc) info_->ReleaseVarDesc(desc); }
    VarDesc(const VarDesc&) = delete;
    VarDesc& operator=(const VarDesc&) = delete;
    ITypeInfo* info_;
    VARDESC* desc = nullptr;
};

}  // namespace tova
