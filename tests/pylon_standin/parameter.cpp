#include "tests/pylon_standin/pylon_standin.h"

#include <algorithm>
#include <pylon/Parameter.h>

using tessaro::pylon_standin::Enumeration;
using tessaro::pylon_standin::Integer;

namespace GenApi {

INode* INodeMap::GetNode(const GenICam::gcstring& name) const {
    if (camera == nullptr || camera->removed)
        return nullptr;
    const auto found = camera->features.find(name.c_str());
    return found == camera->features.end() ? nullptr : &found->second;
}

bool IsReadable(const INode* node) {
    return node != nullptr && node->readable;
}

bool IsWritable(const INode* node) {
    return node != nullptr && node->writable && !node->locked;
}

} // namespace GenApi

namespace Pylon {

CParameter::CParameter(GenApi::INodeMap& nodeMap, const char* name)
    : m_name(name), m_node(nodeMap.GetNode(name)) {}

template<class Value>
Value& CParameter::Get(bool accessible) const {
    Value* value = accessible ? std::get_if<Value>(&m_node->value) : nullptr;
    if (value == nullptr)
        throw AccessException("Node " + m_name + " is not accessible.");
    return *value;
}

template<class Value>
Value& CParameter::Read() const {
    return Get<Value>(GenApi::IsReadable(m_node));
}

template<class Value>
Value& CParameter::Write() const {
    return Get<Value>(GenApi::IsWritable(m_node));
}

String_t CEnumParameter::GetValue() const {
    return Read<Enumeration>().value.c_str();
}

void CEnumParameter::SetValue(const String_t& value) {
    auto& enumeration = Write<Enumeration>();
    if (std::ranges::find(enumeration.settable, value.c_str()) == enumeration.settable.end())
        throw AccessException(std::string("The value ") + value.c_str() + " cannot be set.");
    enumeration.value = value.c_str();
}

void CEnumParameter::GetSettableValues(StringList_t& values) const {
    values.clear();
    for (const std::string& value : Read<Enumeration>().settable)
        values.push_back(value.c_str());
}

double CFloatParameter::GetValue() const {
    return Read<double>();
}

void CFloatParameter::SetValue(double value) {
    Write<double>() = value;
}

std::int64_t CIntegerParameter::GetValue() const {
    return Read<Integer>().value;
}

std::int64_t CIntegerParameter::GetMin() const {
    return Read<Integer>().minimum;
}

std::int64_t CIntegerParameter::GetMax() const {
    return Read<Integer>().maximum;
}

void CIntegerParameter::SetValue(std::int64_t value) {
    Write<Integer>().value = value;
}

void CBooleanParameter::SetValue(bool value) {
    Write<bool>() = value;
}

} // namespace Pylon
