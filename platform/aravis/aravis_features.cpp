#include "platform/aravis/aravis_features.h"

#include "platform/aravis/library_calls.h"

namespace tessaro {

namespace {

// The feature, if the device has it and it means something now.
ArvGcFeatureNode* AvailableFeature(ArvDevice* device, const std::string& name) {
    ArvGcNode* node = arv_device_get_feature(device, name.c_str());
    if (!ARV_IS_GC_FEATURE_NODE(node))
        return nullptr;
    ArvGcFeatureNode* feature = ARV_GC_FEATURE_NODE(node);
    const bool available =
        Checked([&](GError** error) { return arv_gc_feature_node_is_implemented(feature, error); }) !=
            FALSE &&
        Checked([&](GError** error) { return arv_gc_feature_node_is_available(feature, error); }) != FALSE;
    return available ? feature : nullptr;
}

} // namespace

bool IsFeatureReadable(ArvDevice* device, const std::string& name) {
    ArvGcFeatureNode* feature = AvailableFeature(device, name);
    return feature != nullptr && arv_gc_feature_node_get_actual_access_mode(feature) != ARV_GC_ACCESS_MODE_WO;
}

bool IsFeatureWritable(ArvDevice* device, const std::string& name) {
    ArvGcFeatureNode* feature = AvailableFeature(device, name);
    return feature != nullptr &&
           arv_gc_feature_node_get_actual_access_mode(feature) != ARV_GC_ACCESS_MODE_RO &&
           Checked([&](GError** error) { return arv_gc_feature_node_is_locked(feature, error); }) == FALSE;
}

std::string GetEnumerationFeature(ArvDevice* device, const std::string& name) {
    const char* value = Checked(
        [&](GError** error) { return arv_device_get_string_feature_value(device, name.c_str(), error); });
    return value != nullptr ? value : "";
}

void SetEnumerationFeature(ArvDevice* device, const std::string& name, const std::string& value) {
    Checked([&](GError** error) {
        arv_device_set_string_feature_value(device, name.c_str(), value.c_str(), error);
    });
}

std::vector<std::string> SettableFeatureValues(ArvDevice* device, const std::string& name) {
    struct Release {
        void operator()(const char** values) const { g_free(static_cast<gpointer>(values)); }
    };
    guint count = 0;
    const std::unique_ptr<const char*, Release> values(Checked([&](GError** error) {
        return arv_device_dup_available_enumeration_feature_values_as_strings(device, name.c_str(), &count,
                                                                              error);
    }));
    if (values == nullptr)
        return {};
    return {values.get(), values.get() + count};
}

double GetFloatFeature(ArvDevice* device, const std::string& name) {
    return Checked(
        [&](GError** error) { return arv_device_get_float_feature_value(device, name.c_str(), error); });
}

void SetFloatFeature(ArvDevice* device, const std::string& name, double value) {
    Checked([&](GError** error) { arv_device_set_float_feature_value(device, name.c_str(), value, error); });
}

std::int64_t GetIntegerFeature(ArvDevice* device, const std::string& name) {
    return Checked(
        [&](GError** error) { return arv_device_get_integer_feature_value(device, name.c_str(), error); });
}

void SetIntegerFeature(ArvDevice* device, const std::string& name, std::int64_t value) {
    Checked(
        [&](GError** error) { arv_device_set_integer_feature_value(device, name.c_str(), value, error); });
}

IntegerRange GetIntegerFeatureRange(ArvDevice* device, const std::string& name) {
    gint64 minimum = 0;
    gint64 maximum = 0;
    Checked([&](GError** error) {
        arv_device_get_integer_feature_bounds(device, name.c_str(), &minimum, &maximum, error);
    });
    return {minimum, maximum};
}

void SetBooleanFeature(ArvDevice* device, const std::string& name, bool value) {
    Checked([&](GError** error) {
        arv_device_set_boolean_feature_value(device, name.c_str(), value ? TRUE : FALSE, error);
    });
}

void ExecuteCommandFeature(ArvDevice* device, const std::string& name) {
    Checked([&](GError** error) { arv_device_execute_command(device, name.c_str(), error); });
}

} // namespace tessaro
