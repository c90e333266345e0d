#include "storage.h"

namespace {

/// The innermost component call that runs on this thread; null outside of any and while the call is out in Java.
thread_local qxCallScope* currentScope = nullptr;

}  // namespace

void qxArrayAccess::enterScope(qxArray* array, qxCallScope* scope) noexcept {
    array->scope_ = qxCALL_SCOPE;
    array->scopeNext_ = scope->first_;
    array->scopeLink_ = &scope->first_;
    if (scope->first_ != nullptr) {
        scope->first_->scopeLink_ = &array->scopeNext_;
    }
    scope->first_ = array;
}

void qxArrayAccess::leaveScope(qxArray* array) noexcept {
    if (array->scopeLink_ == nullptr) {
        return;
    }
    *array->scopeLink_ = array->scopeNext_;
    if (array->scopeNext_ != nullptr) {
        array->scopeNext_->scopeLink_ = array->scopeLink_;
    }
    array->scopeLink_ = nullptr;
    array->scopeNext_ = nullptr;
    array->scope_ = qxFREE_SCOPE;
}

namespace qx {

qxArray* handOut(qxArrayOwner array) noexcept {
    if (array && currentScope != nullptr) {
        qxArrayAccess::enterScope(array.get(), currentScope);
    }
    return array.release();
}

}  // namespace qx

void qxSetArrayScope(qxArray* array, qxVariableScope scope) {
    qxArrayAccess::leaveScope(array);
    if (scope == qxCALL_SCOPE && currentScope != nullptr) {
        qxArrayAccess::enterScope(array, currentScope);
    }
}

qxCallScope::qxCallScope() : outer_(currentScope) { currentScope = this; }

qxCallScope::~qxCallScope() {
    // The outer scope comes back first: what a payload's end makes must not join a list that is being emptied.
    currentScope = outer_;
    while (first_ != nullptr) {
        qxDestroyArray(first_);
    }
}

qxCallScopeSuspension::qxCallScopeSuspension() : suspended_(currentScope) { currentScope = nullptr; }

qxCallScopeSuspension::~qxCallScopeSuspension() { currentScope = suspended_; }
