#include <new>

#include "host/messages.h"

// A library that cannot start: its exceptions are of its own types, so that their code goes with it.
namespace {

class NoRoom final : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "no room"; }
};

class Refusal final : public kssvIException {
public:
    Refusal() : kssvIException({"unlucky:errors", "Refused", {}}, "refused") {}
    ~Refusal() override = default;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) bool g_refuses;
bool g_refuses = false;
extern "C" __attribute__((visibility("default"))) void OXInitialize_unlucky() {
    if (!g_refuses) throw NoRoom();
    throw Refusal();
}
