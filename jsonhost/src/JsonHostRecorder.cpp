#include "JsonHostRecorder.h"

#include <krlayout/api/KrUtf8Codec.h>
#include <krlayout/host/KrHostInterfaceId.h>

std::string JsonHostRecorder::Target::text() const {
    if (kind == "feature") return kind + "(" + KrUtf8Codec::Encode(name) + ")";
    return kind + "(" + std::to_string(id.first) + "," + std::to_string(id.second) + ")";
}

bool JsonHostRecorder::Target::operator==(Target const& other) const {
    return kind == other.kind && id == other.id && segment == other.segment && name == other.name;
}

JsonHostRecorder::JsonHostRecorder(bool bulkInsert, bool autoRelations)
    : bulkInsert_(bulkInsert), autoRelations_(autoRelations) {}

bool JsonHostRecorder::IsSetting(int setting) {
    return setting == KR_SETTING_BULK_INSERT || setting == KR_SETTING_AUTO_RELATIONS;
}

bool JsonHostRecorder::setting(int setting) const {
    if (setting == KR_SETTING_BULK_INSERT) return bulkInsert_;
    if (setting == KR_SETTING_AUTO_RELATIONS) return autoRelations_;
    return false;
}

std::size_t JsonHostRecorder::countRequests(std::string const& method) const {
    std::size_t n = 0;
    for (Request const& request : requests_) {
        if (request.method == method) ++n;
    }
    return n;
}

void JsonHostRecorder::logRequest(std::string object, std::string method, std::string arguments, long status) {
    requests_.push_back(Request{std::move(object), std::move(method), std::move(arguments), status});
}

void JsonHostRecorder::select(Target const& target, bool append, bool withCallout, std::wstring const& callout) {
    if (!append) selection_.clear();
    if (withCallout) callouts_.push_back(Selected{target, true, callout});
    for (Selected& selected : selection_) {
        if (selected.target == target) {
            if (withCallout) {
                selected.hasCallout = true;
                selected.callout = callout;
            }
            return;
        }
    }
    selection_.push_back(Selected{target, withCallout, withCallout ? callout : std::wstring()});
}

void JsonHostRecorder::clearSelection() {
    selection_.clear();
    ++selectionClears_;
}

void JsonHostRecorder::changeSetting(int setting, bool value) {
    if (setting == KR_SETTING_BULK_INSERT) bulkInsert_ = value;
    if (setting == KR_SETTING_AUTO_RELATIONS) autoRelations_ = value;
    settingChanges_.push_back(SettingChange{setting, value});
}
