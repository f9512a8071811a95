// "Is there an entry at this path?" asked for thousands of paths in one
// folder, as a batch copy asks before every file. Each folder's names are read
// once (hidden ones too, with no look at any entry); a look-up is then a hash
// probe. A look at the file system for every path would take the folder's
// lock in the kernel each time, against the worker creating files there.
//
// The answer is a snapshot: an entry made by another program after the first
// question is not seen. Callers that act on "absent" therefore place their
// file so that it never replaces one (RenameNoReplace below).
#pragma once

#include <string>
#include <unordered_set>

namespace trel {

class ExistingNames {
 public:
  bool Contains(const std::string& path);
  // Records an entry the caller is about to make, so that a later path of the
  // batch with the same name is seen as taken.
  void Add(const std::string& path);
  void Clear();

 private:
  void Read(const std::string& folder);

  std::string folder_;  // the folder read last, with its separator
  bool readable_ = false;
  std::unordered_set<std::string> names_;
};

}  // namespace trel
