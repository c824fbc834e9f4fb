#include "tests/support/host_recorder.h"
#include "tests/support/host_test.h"

using namespace ks_test;

namespace {

class HostTraffic : public ModelTest {};

TEST_F(HostTraffic, aStructOutlivesTheCallThatHandsItOut) {
    HostRecorder recorder{"kssvSetLocalScope", "hvSetArrayScope", "destroy"};
    port(u"Gain", 1)->getHOSObject(u"m1", true);
    EXPECT_EQ(recorder.lines(), (Lines{"kssvSetLocalScope struct", "hvSetArrayScope struct 4"}));
}

}  // namespace
