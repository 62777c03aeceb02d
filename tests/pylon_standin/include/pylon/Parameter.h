#pragma once

#include <pylon/PylonBase.h>

namespace tessaro::pylon_standin {
struct Feature;
} // namespace tessaro::pylon_standin

namespace GenApi {

using INode = tessaro::pylon_standin::Feature;

class INodeMap {
public:
    /// Without a camera, and of a camera that was removed, it has no nodes.
    std::shared_ptr<tessaro::pylon_standin::Camera> camera;

    INode* GetNode(const GenICam::gcstring& name) const;
};

bool IsReadable(const INode* node);
bool IsWritable(const INode* node);

} // namespace GenApi

namespace Pylon {

class CParameter {
public:
    CParameter(GenApi::INodeMap& nodeMap, const char* name);

protected:
    template<class Value>
    Value& Read() const;
    template<class Value>
    Value& Write() const;

private:
    template<class Value>
    Value& Get(bool accessible) const;

    std::string m_name;
    GenApi::INode* m_node;
};

class CEnumParameter : public CParameter {
public:
    using CParameter::CParameter;
    String_t GetValue() const;
    void SetValue(const String_t& value);
    void GetSettableValues(StringList_t& values) const;
};

class CFloatParameter : public CParameter {
public:
    using CParameter::CParameter;
    double GetValue() const;
    void SetValue(double value);
};

class CIntegerParameter : public CParameter {
public:
    using CParameter::CParameter;
    std::int64_t GetValue() const;
    std::int64_t GetMin() const;
    std::int64_t GetMax() const;
    void SetValue(std::int64_t value);
};

class CBooleanParameter : public CParameter {
public:
    using CParameter::CParameter;
    void SetValue(bool value);
};

} // namespace Pylon
