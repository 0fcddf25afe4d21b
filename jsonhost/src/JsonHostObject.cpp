#include "JsonHostObject.h"

#include "JsonHostCallout.h"
#include "JsonHostState.h"
#include "JsonHostText.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostObject::JsonHostObject(std::shared_ptr<JsonHostState> state) : state_(std::move(state)) {
    key_ = state_->track(this);
}

JsonHostObject::~JsonHostObject() {
    state_->untrack(key_);
}

void JsonHostObject::hostAddRef() {
    ++hostHeld_;
    ++count_;
}

void JsonHostObject::hostRelease() {
    if (hostHeld_ == 0) return;
    --hostHeld_;
    if (--count_ == 0) delete this;
}

unsigned long JsonHostObject::clientAddRef() {
    return ++count_;
}

unsigned long JsonHostObject::clientRelease() {
    if (count_ <= hostHeld_) {
        state_->recorder().countOverRelease();
        return count_;
    }
    unsigned long const remaining = --count_;
    if (remaining == 0) delete this;
    return remaining;
}

long JsonHostObject::record(char const* method, std::string arguments, long status) const {
    state_->recorder().logRequest(describe(), method, std::move(arguments), status);
    return status;
}

long JsonHostObject::answerQuery(int interfaceId, void** object, void* iface) {
    std::string const name = InterfaceName(interfaceId);
    if (object == nullptr) return record("QueryInterface", name, KR_HOST_INVALIDARG);
    *object = iface;
    if (iface == nullptr) return record("QueryInterface", name, KR_HOST_NOINTERFACE);
    clientAddRef();
    return record("QueryInterface", name, KR_HOST_OK);
}

bool JsonHostObject::live() const {
    return !state_->closed();
}

long JsonHostObject::selectAs(JsonHostRecorder::Target const& target, bool append) {
    std::string const arguments = JsonHostText::Bool(append);
    if (!live()) return record("Select", arguments, KR_HOST_FAIL);
    state_->recorder().select(target, append, false, std::wstring());
    return record("Select", arguments, KR_HOST_OK);
}

long JsonHostObject::selectWithCalloutAs(JsonHostRecorder::Target const& target, bool append,
                                         IHostCallout* callout) {
    std::string arguments = JsonHostText::Bool(append) + ", ";
    if (callout == nullptr) return record("SelectWithCallout", arguments + "null", KR_HOST_INVALIDARG);
    // The host's own callouts are read directly so that the log shows only the client's requests.
    std::wstring text;
    if (auto const* own = dynamic_cast<JsonHostCallout const*>(callout)) {
        text = own->text();
    } else if (callout->GetText(&text) != KR_HOST_OK) {
        return record("SelectWithCallout", arguments + "callout", KR_HOST_INVALIDARG);
    }
    arguments += JsonHostText::Quoted(text);
    if (!live()) return record("SelectWithCallout", arguments, KR_HOST_FAIL);
    state_->recorder().select(target, append, true, text);
    return record("SelectWithCallout", arguments, KR_HOST_OK);
}

std::string JsonHostObject::InterfaceName(int interfaceId) {
    switch (interfaceId) {
    case KR_IID_UNKNOWN: return "KR_IID_UNKNOWN";
    case KR_IID_APPLICATION: return "KR_IID_APPLICATION";
    case KR_IID_DOCUMENT: return "KR_IID_DOCUMENT";
    case KR_IID_ROUTE_MODEL: return "KR_IID_ROUTE_MODEL";
    case KR_IID_ROUTE_DATA: return "KR_IID_ROUTE_DATA";
    case KR_IID_ROUTE_CONTAINER: return "KR_IID_ROUTE_CONTAINER";
    case KR_IID_ROUTE_ITEM: return "KR_IID_ROUTE_ITEM";
    case KR_IID_SKETCH_ENTITY: return "KR_IID_SKETCH_ENTITY";
    case KR_IID_SKETCH_LINE: return "KR_IID_SKETCH_LINE";
    case KR_IID_SKETCH_ARC: return "KR_IID_SKETCH_ARC";
    case KR_IID_CURVE: return "KR_IID_CURVE";
    case KR_IID_POINT: return "KR_IID_POINT";
    case KR_IID_SKETCH: return "KR_IID_SKETCH";
    case KR_IID_SELECTION_MANAGER: return "KR_IID_SELECTION_MANAGER";
    case KR_IID_SELECTABLE: return "KR_IID_SELECTABLE";
    case KR_IID_CALLOUT: return "KR_IID_CALLOUT";
    case KR_IID_FEATURE: return "KR_IID_FEATURE";
    }
    return std::to_string(interfaceId);
}
