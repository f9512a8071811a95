// A shell that records what the core asked of it, for tests.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "front/UserMessages.h"

namespace trel::test {

struct RecordedBox {
  std::string text;
  MsgButtons buttons;
  MsgIcon icon;
  std::string title;
};

class RecordingShell : public UserMessages {
 public:
  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                   const std::string& title) override;
  void ErrorMessage(const std::string& description) override { errors.push_back(description); }
  bool ErrorMessage2(const std::string& description) override;
  void RefreshActivePane() override { ++refreshes; }
  void MarkMemorySpot(int spot) override { marked.insert(spot); }
  bool IsMemorySpotMarked(int spot) const override { return marked.count(spot) != 0; }
  void StatusDisplay(const std::string& text) override { statuses.push_back(text); }
  bool EscapePressed() override;

  std::vector<RecordedBox> boxes;
  std::vector<std::string> errors;
  std::vector<std::string> questions;
  std::vector<std::string> statuses;
  std::set<int> marked;
  int refreshes = 0;
  MsgResult nextAnswer = MsgResult::Ok;  // answer of every MsgBox
  bool continueAnyway = true;            // answer of ErrorMessage2
  int escapeAfterPolls = -1;             // -1: never; n: Esc is down from poll n+1 on
  int escapePolls = 0;
};

}  // namespace trel::test
