#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"

#include <cstdio>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/StringImpl.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char sourceName[] = "../avbase/avbase_srcutils/avbase_cbaseavproc";

// Lines that the host reads beside an error of these operations.
enum Line : int { lineGetInterface = 40, lineSetProperty = 60, lineGetProperty = 80, lineGetPropertyNames = 100 };

template <class T>
void Scan(CBaseAVProc::PropertyNode& node, const char* format) {
    T value;
    if (std::sscanf(node.text.c_str(), format, &value) == 1) node.SetValue(value);
}

}  // namespace

void CBaseAVProc::PropertyNode::Parse() {
    switch (type) {
        case typeText:
            SetValue(text.c_str());
            break;
        case typeReal:
            Scan<double>(*this, "%lf");
            break;
        case typeInt64:
            Scan<long long>(*this, "%lld");
            break;
        case typeInt32:
            Scan<int>(*this, "%d");
            break;
        case typeInt16:
            Scan<short>(*this, "%hd");
            break;
        default:
            break;
    }
}

CBaseAVProc::CBaseAVProc(const char* name, unsigned type, unsigned subtype)
    : m_type(type), m_subtype(subtype), m_name(name) {}

void* CBaseAVProc::GetInterface(const char* name) {
    return AtBoundary(lineGetInterface, sourceName, [&] {
        RequirePointer(name, lineGetInterface, sourceName);
        const auto found = m_interfaces.find(name);
        if (found == m_interfaces.end()) throw CBaseException(errorNoInterface, name, lineGetInterface, sourceName);
        return found->second;
    });
}

void CBaseAVProc::Free() { delete this; }

bool CBaseAVProc::SetProperty(const char* name, const char* value) {
    return AtBoundary(lineSetProperty, sourceName, [&] {
        RequirePointer(name, lineSetProperty, sourceName);
        RequirePointer(value, lineSetProperty, sourceName);
        const std::string key = name;
        PropertyNode& node = RequireProperty(key, lineSetProperty);
        PropertyNode before = node;
        try {
            node.text = value;
            OnSetProperty(key, node);
        } catch (...) {
            node = std::move(before);
            if (node.type == typeText) node.Parse();
            throw;
        }
        return true;
    });
}

const char* CBaseAVProc::GetProperty(const char* name, int* type) {
    return AtBoundary(lineGetProperty, sourceName, [&] {
        RequirePointer(name, lineGetProperty, sourceName);
        const PropertyNode& node = RequireProperty(name, lineGetProperty);
        if (type) *type = node.type;
        return node.text.c_str();
    });
}

IStrings* CBaseAVProc::GetPropertyNames() {
    return AtBoundary(lineGetPropertyNames, sourceName, [&]() -> IStrings* {
        auto names = std::make_unique<CStringsImpl>();
        for (const auto& [name, node] : m_properties)
            if (!names->AddString(name.c_str())) RaisePendingException();
        return names.release();
    });
}

void CBaseAVProc::OnSetProperty(const std::string&, PropertyNode& node) { node.Parse(); }

void CBaseAVProc::AddProperty(const std::string& name, const PropertyNode& node) {
    const auto [place, added] = m_properties.emplace(name, node);
    // The slot of a text points into its own node, so a copied node needs a pointer of its own.
    if (added && node.type == typeText) place->second.Parse();
}

void CBaseAVProc::AddInterface(const std::string& name, void* pointer) { m_interfaces.emplace(name, pointer); }

CBaseAVProc::PropertyNode& CBaseAVProc::RequireProperty(const std::string& name, int line) {
    const auto found = m_properties.find(name);
    if (found == m_properties.end()) {
        const std::string message = textPropertyNotFoundHead + name + textPropertyNotFoundTail;
        throw CBaseException(errorNotFound, message.c_str(), line, sourceName);
    }
    return found->second;
}

}  // namespace AVBased
