#pragma once

#include "platform/camera_device.h"

#include <arv.h>
#include <string>
#include <vector>

namespace tessaro {

// The features of a device by their names. They throw CameraError, but for the questions.

bool IsFeatureReadable(ArvDevice* device, const std::string& name);
bool IsFeatureWritable(ArvDevice* device, const std::string& name);

std::string GetEnumerationFeature(ArvDevice* device, const std::string& name);
void SetEnumerationFeature(ArvDevice* device, const std::string& name, const std::string& value);
std::vector<std::string> SettableFeatureValues(ArvDevice* device, const std::string& name);
double GetFloatFeature(ArvDevice* device, const std::string& name);
void SetFloatFeature(ArvDevice* device, const std::string& name, double value);
std::int64_t GetIntegerFeature(ArvDevice* device, const std::string& name);
void SetIntegerFeature(ArvDevice* device, const std::string& name, std::int64_t value);
IntegerRange GetIntegerFeatureRange(ArvDevice* device, const std::string& name);
void SetBooleanFeature(ArvDevice* device, const std::string& name, bool value);
void ExecuteCommandFeature(ArvDevice* device, const std::string& name);

} // namespace tessaro
