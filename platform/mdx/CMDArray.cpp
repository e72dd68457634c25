#include "frame/OrvoMdx.h"

#include <cstring>

CMDArray::CMDArray() {
    status = MDACreate(&array, 0);
}

CMDArray::~CMDArray() {
    MDADestroy(array);
}

void CMDArray::GetVal(MDRData* record, const char* field, MDRVar& value) const {
    if (const MDRField handle = MDRFldByName(array, field))
        MDRGetVal(handle, record, &value);
    else
        value.type = MDX_NONE;
}

void CMDArray::SetValF(MDRData* record, const char* field, const MDRVar& value) {
    if (const MDRField handle = MDRFldByName(array, field)) {
        MDRSetVal(handle, record, &value);
        MDRSetUser(handle, record, 1);
    }
}

void CMDArray::SetValF(MDRData* record, int field, const MDRVar& value) {
    if (const MDRField handle = MDRFldByNum(array, field)) {
        MDRSetVal(handle, record, &value);
        MDRSetUser(handle, record, 1);
    }
}

uint32_t CMDArray::RecPost(MDRData* record) {
    if (!record || record->owner != array)
        return 0;
    uint32_t result = 0;
    status = MDARecPost(record, &result);
    return result;
}

void CMDArray::KeyAdd(const char* fields, uint32_t flags) {
    if (!fields) {
        status = MDX_E_ARG;
        return;
    }
    MDAKeyDescription description{};
    std::memcpy(description.name, fields, strnlen(fields, sizeof description.name));
    description.flags = flags;
    status = MDAKeyAdd(array, 1, &description);
}

void CMDArray::Attach(MDArray* other) {
    if (!other || other == array) {
        status = MDX_E_SELF;
        return;
    }
    MDADestroy(array);
    array = other;
    status = MDX_OK;
}

void CMDArray::RecDel(MDRData* record) {
    status = record && record->owner == array ? MDARecDel(record) : int(MDX_E_OWNER);
}

MDRData* CMDArray::RecEdit(MDRData* record) const {
    return record && record->owner == array ? MDARecEdit(record) : nullptr;
}
