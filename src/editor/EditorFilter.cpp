// The editor between the record and its parts: filling the controls from the
// filter and back, a new filter, the preview run, and what the program and
// the tests ask of the parts.
#include <QAction>
#include <QCheckBox>
#include <QLabel>

#include "editor/ClickLabel.h"
#include "editor/CodeBoxes.h"
#include "editor/EditorWidgets.h"
#include "editor/FFEditorType1.h"
#include "editor/LivePreview.h"
#include "editor/MemorySpots.h"
#include "editor/SliderBank.h"
#include "host/ff/FFEngine.h"

namespace trel {

// --- filter and controls ----------------------------------------------------------

void FFEditorType1::FilterToEditor() {
  FFFilter& f = *ctx_.filter;
  setEnabled(false);
  const std::string* names[5] = {&f.filename, &f.category, &f.title, &f.author, &f.copyright};
  for (int i = 0; i < 5; ++i) label6_[size_t(i)]->setText(Latin1(*names[i]));
  sliders_->Fill(f);
  codes_->Fill(f);
  codes_->ClearFault();
  setEnabled(true);
  timer1_.stop();  // filling the boxes is no typing
}

void FFEditorType1::EditorToFilter() {
  FFFilter& f = *ctx_.filter;
  std::string* names[5] = {&f.filename, &f.category, &f.title, &f.author, &f.copyright};
  for (int i = 0; i < 5; ++i) *names[i] = Latin1(label6_[size_t(i)]->text());
  sliders_->Read(f);
  codes_->Read(f);
}

bool FFEditorType1::NewFilter() {
  if (BatchRefuses()) return false;
  UserMessages& shell = ctx_.shell ? *ctx_.shell : NoMessages();
  if (shell.MsgBox("Delete the current filter?", MsgButtons::OkCancel, MsgIcon::Question,
                   "Attention") != MsgResult::Ok)
    return false;
  setEnabled(false);
  for (int i = 0; i < 5; ++i) label6_[size_t(i)]->setText(kNameRest[i]);
  codes_->Reset();
  sliders_->Reset();
  codes_->ClearFault();
  setEnabled(true);
  timer1_.stop();
  preview_->ShowSource();
  return true;
}

// --- the preview ---------------------------------------------------------------------

bool FFEditorType1::UpdatePreview() {
  if (!isEnabled()) return false;
  codes_->FillEmpty();
  setWindowTitle("Calculating...");
  if (preview_->source().isNull()) {
    setWindowTitle(kEditorCaption);
    return false;
  }
  EditorToFilter();
  FFFilter f = *ctx_.filter;
  codes_->ApplyMode(f);
  // The engine says at once where a code is wrong; the plugin route would only fail.
  ff::CompileError err;
  const ff::CompiledFilter compiled = ff::CompileFilter({f.codeR, f.codeG, f.codeB, f.codeA}, &err);
  codes_->ShowWarnings(compiled.valid() ? compiled.compatWarnings() : std::vector<ff::CompatWarning>{});
  if (!compiled.valid()) {
    codes_->ShowFault(err.channel, err.position, err.message);
    setWindowTitle(kEditorCaption);
    return false;
  }
  codes_->ClearFault();
  const PreviewPlan plan = PlanPreview(f, mnuAlphaChannel_->isChecked());
  inPluginCompile_ = false;
  preview_->Start(PreviewJob{f, plan.passes, Options(), {}, nullptr}, plan.alphaDisplay);
  return true;
}

void FFEditorType1::PreviewFinished(bool ok, const QString& message) {
  if (!ok) codes_->ShowRunFault(message);
  setWindowTitle(kEditorCaption);
  emit previewFinished(ok);
}

// While a knob is held the preview follows only with "apply at once".
void FFEditorType1::SliderMoved(SliderMove how) {
  if (!isEnabled() || !AutoPreview()) return;
  if (how == SliderMove::Dragging && !ApplyAtOnce()) return;
  UpdatePreview();
}

bool FFEditorType1::previewIdle() const { return preview_->idle(); }
int FFEditorType1::previewRuns() const { return preview_->runs(); }
const QImage& FFEditorType1::previewSource() const { return preview_->source(); }
QImage FFEditorType1::previewResult() const { return preview_->result(); }
void FFEditorType1::SetPreviewPicture(const QImage& picture) { preview_->SetSource(picture); }
PicView* FFEditorType1::picView() const { return preview_->picView(); }
void FFEditorType1::SetAlphaDisplay(bool on) { mnuAlphaChannel_->setChecked(on); }
void FFEditorType1::SetAutoPreview(bool on) {
  const QSignalBlocker quiet(check2_);
  check2_->setChecked(on);
}
void FFEditorType1::SetTypingDelay(int ms) { timer1_.setInterval(ms); }

// --- sliders and memory spots ---------------------------------------------------------------

bool FFEditorType1::GraphSliders() const { return sliders_->graphSliders(); }
int FFEditorType1::SliderValue(int n) const { return sliders_->Value(n); }
void FFEditorType1::SetSliderValue(int n, int value) { sliders_->Set(n, value); }
void FFEditorType1::SetLocked(int n, bool locked) { sliders_->SetLocked(n, locked); }
bool FFEditorType1::Locked(int n) const { return sliders_->Locked(n); }
void FFEditorType1::MapSwitch(int m) { sliders_->SwitchMap(m); }

bool FFEditorType1::RandomizeSliders() {
  setEnabled(false);
  sliders_->Randomize();
  setEnabled(true);
  return UpdatePreview();
}

void FFEditorType1::StoreSpot(int s) { spots_->Store(s); }

void FFEditorType1::RecallSpot(int s) {
  setEnabled(false);
  spots_->Recall(s);
  setEnabled(true);
  UpdatePreview();
}

bool FFEditorType1::SpotMarked(int s) const { return spots_->Marked(s); }
void FFEditorType1::ClearAllSpots() { spots_->ClearAll(); }

// --- code boxes ------------------------------------------------------------------------

void FFEditorType1::Label2_Click(int i) { codes_->Toggle(i); }
void FFEditorType1::Command10_Click() { codes_->SwitchMode(); }
CodeMode FFEditorType1::codeMode() const { return codes_->mode(); }
void FFEditorType1::InsertInCode(const QString& text) { codes_->Insert(text); }
void FFEditorType1::InsertFunction(const QString& entry) { codes_->InsertFunction(entry); }
void FFEditorType1::InsertSnippet(int index) { codes_->InsertSnippet(index); }
const std::vector<Snippet>& FFEditorType1::Snippets() const { return codes_->snippets(); }
int FFEditorType1::FindAndReplace(const QString& find, const QString& replace, ReplaceScope scope) {
  return codes_->FindAndReplace(find, replace, scope);
}
void FFEditorType1::ShowFindReplace() { codes_->ShowFindReplace(); }
void FFEditorType1::ChooseCodeFont() { codes_->ChooseFont(); }
QString FFEditorType1::codeError() const { return codes_->fault(); }

}  // namespace trel
