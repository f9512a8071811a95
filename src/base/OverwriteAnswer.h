// What a batch does with one file whose target may already be there. Every
// command that writes many files (copy, move, convert, unzip, batch filter)
// asks the same question and understands the same three answers.
#pragma once

namespace trel {

enum class OverwriteAnswer {
  Write,  // the file is written, replacing what stood there
  Skip,   // the file is left out; the target stays as it was
  Stop,   // the batch ends here; nothing more is written
};

}  // namespace trel
