#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>

#include "host/object_system.h"

namespace ks_hmi_foundation {

/// Common base of the library's host methods: the method's name and signature, and typed access to a call's
/// arguments (0-based) and results.
class HMICOSMethodInfo : public hos::COSMethodInfo {
public:
    hos::InternedName getName() const override { return m_name; }
    const hos::COSMethodSignature& getSignature() const override { return *m_signature; }

protected:
    using Types = std::initializer_list<const char*>;

    /// An empty type text stands for an unspecified type; the last `optionalInputs` inputs may be left out.
    HMICOSMethodInfo(const char* name, Types inputs, Types outputs, int optionalInputs = 0);

    static bool isGiven(const hos::Invocation& call, std::size_t position) { return call.arguments.size() > position; }
    template <class T>
    static const T& argument(const hos::Invocation& call, std::size_t position) {
        return std::get<T>(call.arguments[position]);
    }
    static const hvArray* value(const hos::Invocation& call, std::size_t position) {
        return argument<const hvArray*>(call, position);
    }
    /// The 0-based position for the host's 1-based one; 0 raises "InvalidElementIndex" with `count`, and what is
    /// too large is left to the set to refuse.
    static std::size_t elementIndex(const hos::Invocation& call, std::size_t position, std::size_t count);

    /// Hands `result` over in the first slot; a null value stands for no object.
    static void setResult(hos::Invocation& call, HvArrayPtr result);
    static void setResult(hos::Invocation& call, bool result);
    /// Hands the text over as a character array.
    static void setResult(hos::Invocation& call, const std::string& text);

private:
    hos::InternedName m_name;
    std::unique_ptr<hos::COSMethodSignature> m_signature;
};

}  // namespace ks_hmi_foundation
