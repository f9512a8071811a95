// Checks that depend on file permissions mean nothing to root, who reads and
// writes everything; CI runs as root. RunAsOrdinaryUser runs such a check in a
// forked child that, when the test runs as root, first hands the named folders
// to the user "nobody" and then becomes that user for good. The child's
// GoogleTest failures are printed by the child and reported to the parent
// through its exit status.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace trel::test {

// Runs check() in a child without root's rights; true when it passed. The
// folders in handOver (recursively) become the ordinary user's first, so that
// the child can work in what the parent prepared.
bool RunAsOrdinaryUser(const std::vector<std::string>& handOver, const std::function<void()>& check);

}  // namespace trel::test
