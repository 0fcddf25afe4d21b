// Interface ids of the host's automation object model, asked for with IHostUnknown::QueryInterface.
#pragma once

enum KrHostInterfaceId : int {
    KR_IID_UNKNOWN = 0,
    KR_IID_APPLICATION = 1,
    KR_IID_DOCUMENT = 2,
    KR_IID_ROUTE_MODEL = 3,      // on a document that holds routes
    KR_IID_ROUTE_DATA = 4,       // on the route sketch object
    KR_IID_ROUTE_CONTAINER = 5,
    KR_IID_ROUTE_ITEM = 6,
    KR_IID_SKETCH_ENTITY = 7,
    KR_IID_SKETCH_LINE = 8,
    KR_IID_SKETCH_ARC = 9,
    KR_IID_CURVE = 10,
    KR_IID_POINT = 11,
    KR_IID_SKETCH = 12,
    KR_IID_SELECTION_MANAGER = 13,
    KR_IID_SELECTABLE = 14,
    KR_IID_CALLOUT = 15,
    KR_IID_FEATURE = 16
};

// Status codes of host requests.
enum KrHostStatus : long {
    KR_HOST_OK = 0,
    KR_HOST_FAIL = 1,           // the request could not be carried out
    KR_HOST_NOINTERFACE = 2,    // QueryInterface: the object does not have that interface
    KR_HOST_INVALIDARG = 3      // a null out pointer or an argument out of range
};

// Kinds of sketch entity (IHostSketchEntity::GetKind); any other value is some other curve.
enum KrHostEntityKind : int {
    KR_ENTITY_LINE = 0,
    KR_ENTITY_ARC = 1
};

// The two drawing settings saved and set around the bulk insertion of lines.
enum KrHostDrawingSetting : int {
    KR_SETTING_BULK_INSERT = 0,        // add entities straight to the sketch: set true while drawing
    KR_SETTING_AUTO_RELATIONS = 1      // infer relations while drawing: set false while drawing
};
