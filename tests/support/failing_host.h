#pragma once

#include "tests/support/fake_manager.h"
#include "tests/support/test_frames.h"

namespace AVBased::Testing {

/// Calls use(host) with hosts that fail from their first call on, from their second one, and so on until none fails any
/// more, in each way in which a host may fail. What fails must be filed, and every source closed in the end.
template <class Use>
void UseFailingHosts(const std::map<std::string, FakeFile>& files, Use use) {
    for (const auto fault : {FakeManager::Fault::Null, FakeManager::Fault::NullWithError, FakeManager::Fault::Throw}) {
        bool failed = true;
        for (int call = 0; failed; ++call) {
            ASSERT_LT(call, 100);
            ForgetError();
            FakeManager host;
            host.files = files;
            host.FailFrom(call, fault);
            use(host);
            failed = host.HasFailed();
            EXPECT_EQ(LastError().code != 0, failed) << "call " << call << " fault " << int(fault);
            EXPECT_EQ(host.openSources, 0) << "call " << call << " fault " << int(fault);
        }
    }
}

}  // namespace AVBased::Testing
