#pragma once

#include "capi/kinora_veltrix.h"
#include "interface/IKinoraVeltrixInterface.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace capi {

/// A handle that is deleted at the end.
class Handle {
public:
    explicit Handle(const kv_options* options = nullptr) {
        EXPECT_EQ(kv_new(KV_API_VERSION, options, &m_handle), KV_OK);
    }
    ~Handle() { Delete(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    operator kv_coupling*() const { return m_handle; } // NOLINT(google-explicit-constructor): it stands for the handle
    void Delete() {
        EXPECT_EQ(kv_delete(m_handle), KV_OK);
        m_handle = nullptr;
    }

private:
    kv_coupling* m_handle = nullptr;
};

/// What `kv_error_text` says of a handle; of this thread for none.
inline std::string ErrorText(kv_coupling* handle) {
    const char* text = nullptr;
    EXPECT_EQ(kv_error_text(handle, &text), KV_OK);
    return text ? text : "no text";
}

/// The texts of a list, which is freed.
inline std::vector<std::string> TakeTexts(kv_texts* list) {
    std::size_t count = 0;
    EXPECT_EQ(kv_texts_count(list, &count), KV_OK);
    std::vector<std::string> texts;
    for (std::size_t index = 0; index < count; ++index) {
        const char* text = nullptr;
        EXPECT_EQ(kv_texts_at(list, index, &text), KV_OK);
        texts.emplace_back(text);
    }
    EXPECT_EQ(kv_texts_free(list), KV_OK);
    return texts;
}

/// @name Records, as a C program fills them; names and arrays are the caller's
/// @{
template <class Record>
Record Sized() {
    Record record = {};
    record.size = sizeof record;
    return record;
}

template <class Record>
void Place(Record& record, const IKinoraVeltrixInterface::Transform& transform) {
    record.body = transform.name.c_str();
    std::copy(std::begin(transform.translation), std::end(transform.translation), record.position);
    std::copy(std::begin(transform.rotation), std::end(transform.rotation), record.rotation);
}

inline kv_pose PoseOf(const IKinoraVeltrixInterface::Transform& transform) {
    auto pose = Sized<kv_pose>();
    Place(pose, transform);
    return pose;
}

inline kv_group GroupOf(const IKinoraVeltrixInterface::Transform& transform, const std::vector<const char*>& objects) {
    auto group = Sized<kv_group>();
    Place(group, transform);
    group.objects = objects.data();
    group.object_count = objects.size();
    return group;
}

inline kv_material MaterialOf(const char* object, const char* name, const double (&direction)[3]) {
    auto material = Sized<kv_material>();
    material.object = object;
    material.material = name;
    std::copy(std::begin(direction), std::end(direction), material.coercivity_direction);
    return material;
}
/// @}

} // namespace capi
