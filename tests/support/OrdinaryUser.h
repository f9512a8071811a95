// Checks that depend on file permissions mean nothing to root, who reads and
// writes everything; CI runs as root. RunAsOrdinaryUser runs such a check in a
// child process that, when the test runs as root, first hands the named folders
// to the user "nobody" and then becomes that user for good.
//
// The child is this test program started again for the current test only (as
// GoogleTest's thread-safe death tests do): a fork alone would inherit whatever
// locks other threads of a Qt program hold. The child repeats the test's
// preparation up to the call, runs the check, prints its failures and reports
// them to the parent through its exit status.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace trel::test {

// Runs check() in a child without root's rights; true when it passed. The
// folders in handOver (recursively) become the ordinary user's first, so that
// the child can work in what the test prepared.
bool RunAsOrdinaryUser(const std::vector<std::string>& handOver, const std::function<void()>& check);

}  // namespace trel::test
