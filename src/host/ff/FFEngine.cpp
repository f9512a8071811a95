#include "host/ff/FFEngine.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <cstring>
#include <thread>
#include <vector>

#include "host/ff/FFCompiler.h"
#include "host/ff/FFMachine.h"
#include "host/ff/FFParser.h"
#include "host/ff/FFProgram.h"

namespace trel::ff {

bool CompiledFilter::parallel(bool hasAlpha) const {
  if (!program_) return false;
  int channels = hasAlpha ? 4 : 3;
  for (int z = 0; z < channels; ++z)
    if (program_->channels[z].sideEffects) return false;
  return true;
}

CompiledFilter CompileFilter(const std::array<std::string, 4>& code, CompileError* err) {
  CompiledFilter result;
  auto prog = std::make_shared<Program>();
  Ast asts[4];
  bool parsed[4] = {};
  ParseError errors[4];
  std::vector<CompatNote> notes[4];
  bool effects = false;
  for (int z = 0; z < 4; ++z) {
    parsed[z] = ParseExpression(code[z], asts[z], errors[z], &notes[z]);
    for (const Node& n : asts[z].nodes)
      effects = effects || (parsed[z] && n.kind == NodeKind::Call && HasSideEffect(static_cast<Fn>(n.code)));
  }
  // Without side effects anywhere, a part that several channels compute alike
  // is computed once per pixel, by the first of them.
  SharedValues shared;
  bool independent[4] = {};
  for (int z = 0; z < 4; ++z) {
    for (CompatNote& n : notes[z])
      result.compat_.push_back(CompatWarning{z, n.position, n.length, std::move(n.message)});
    if (!parsed[z]) {
      if (err) *err = CompileError{z, errors[z].position, errors[z].message};
      return result;
    }
    shared.later.clear();
    for (int j = z + 1; j < 4; ++j)
      if (parsed[j]) shared.later.push_back(&asts[j]);
    if (!CompileChannel(asts[z], z, *prog, effects ? nullptr : &shared)) {
      if (err) *err = CompileError{z, 0, "The filter is too large to compile: it needs too many distinct values."};
      return result;
    }
    independent[z] = !DependsOnChannel(asts[z]);
  }
  // Filters often give several channels one formula; without side effects
  // anywhere (a cell written between them would change the value) it is
  // computed once per pixel.
  for (const ChannelCode& ch : prog->channels) effects = effects || ch.sideEffects;
  for (int z = 1; z < 4 && !effects; ++z)
    for (int j = 0; j < z; ++j)
      if (independent[z] && code[j] == code[z] && prog->channels[j].sharedWith < 0) {
        prog->channels[z].code.clear();
        prog->channels[z].result = prog->channels[j].result;
        prog->channels[z].sharedWith = j;
        prog->channels[z].needs = uint8_t(1u << j | prog->channels[j].needs);
        break;
      }
  if (err) *err = CompileError{};
  result.program_ = std::move(prog);
  return result;
}

namespace {

bool Fits(const ConstImageView& v) {
  return v.pixels != nullptr && v.width > 0 && v.height > 0 && v.stride >= ptrdiff_t(v.width) * 4;
}

bool Overlap(const ConstImageView& a, const ImageView& b) {
  const uint8_t* aEnd = a.pixels + (a.height - 1) * a.stride + ptrdiff_t(a.width) * 4;
  const uint8_t* bEnd = b.pixels + (b.height - 1) * b.stride + ptrdiff_t(b.width) * 4;
  return std::less<const uint8_t*>()(a.pixels, bEnd) && std::less<const uint8_t*>()(b.pixels, aEnd);
}

}  // namespace

RenderStatus RenderFilter(const CompiledFilter& filter, const Controls& controls,
                          const ConstImageView& srcIn, const ImageView& dst,
                          const RenderOptions& options) {
  if (!filter.valid() || !Fits(srcIn) || !Fits(dst) || dst.width != srcIn.width ||
      dst.height != srcIn.height)
    return RenderStatus::Invalid;

  // Writing over the picture being read would let later pixels see results.
  ConstImageView src = srcIn;
  std::vector<uint8_t> copy;
  if (Overlap(srcIn, dst)) {
    copy.resize(size_t(src.width) * size_t(src.height) * 4u);
    for (int y = 0; y < src.height; ++y)
      std::memcpy(copy.data() + size_t(y) * size_t(src.width) * 4u, src.pixels + y * src.stride,
                  size_t(src.width) * 4u);
    src.pixels = copy.data();
    src.stride = ptrdiff_t(src.width) * 4;
  }

  const Program& prog = *filter.program();
  const int32_t* ctl = controls.data();
  const int total = src.height;
  auto rowOut = [&](int y) { return dst.pixels + y * dst.stride; };
  auto cancelled = [&] { return options.cancel && options.cancel(); };
  auto report = [&](int done) {
    if (options.progress) options.progress(done, total);
  };

  if (!filter.parallel(src.hasAlpha)) {
    // Without put, the only effect is rnd's, whose numbers the block form draws
    // ahead in the order of the pixels: rows in order, each in blocks.
    bool writesCells = false;
    for (int z = 0; z < (src.hasAlpha ? 4 : 3); ++z)
      for (const Instr& in : prog.channels[z].code) writesCells = writesCells || in.op == OpCode::Put;
    RunState state;
    state.Reset();
    Machine machine(prog, src, ctl, &state);
    for (int y = 0; y < total; ++y) {
      if (cancelled()) return RenderStatus::Cancelled;
      if (writesCells)
        machine.RunRowOrdered(y, rowOut(y));
      else
        machine.RunRowBlocks(y, rowOut(y));
      report(y + 1);
    }
    return RenderStatus::Done;
  }

  int threads = options.threads > 0 ? options.threads : int(std::thread::hardware_concurrency());
  // Starting threads costs more than a small preview takes on one core.
  if (options.threads <= 0 && int64_t(src.width) * src.height < 32768) threads = 1;
  threads = std::clamp(threads, 1, 64);
  threads = std::min(threads, total);

  if (threads == 1) {
    RunState state;
    state.Reset();
    Machine machine(prog, src, ctl, &state);
    for (int y = 0; y < total; ++y) {
      if (cancelled()) return RenderStatus::Cancelled;
      machine.RunRowBlocks(y, rowOut(y));
      report(y + 1);
    }
    return RenderStatus::Done;
  }

  // Workers take rows a few at a time; the calling thread only watches, so
  // that progress and cancel are served while the rows are computed, however
  // the threads are scheduled.
  std::atomic<int> nextRow{0};
  std::atomic<int> doneRows{0};
  std::atomic<bool> stop{false};
  std::mutex mutex;
  std::condition_variable wake;
  int running = threads;
  const int chunk = std::max(1, std::min(16, total / (threads * 8)));
  auto work = [&] {
    RunState state;
    state.Reset();
    Machine machine(prog, src, ctl, &state);
    while (!stop.load(std::memory_order_relaxed)) {
      int first = nextRow.fetch_add(chunk, std::memory_order_relaxed);
      if (first >= total) break;
      int last = std::min(total, first + chunk);
      for (int y = first; y < last; ++y) machine.RunRowBlocks(y, rowOut(y));
      doneRows.fetch_add(last - first, std::memory_order_relaxed);
    }
    {
      std::lock_guard<std::mutex> lock(mutex);
      --running;
    }
    wake.notify_one();
  };

  if (cancelled()) return RenderStatus::Cancelled;
  std::vector<std::thread> pool;
  pool.reserve(size_t(threads));
  for (int t = 0; t < threads; ++t) pool.emplace_back(work);
  int reported = 0;
  {
    std::unique_lock<std::mutex> lock(mutex);
    // Waking only every few milliseconds keeps the watcher from competing
    // with the workers for the cores.
    while (running > 0) {
      wake.wait_for(lock, std::chrono::milliseconds(10), [&] { return running == 0; });
      const int done = doneRows.load(std::memory_order_relaxed);
      lock.unlock();
      if (done != reported && done < total) {
        report(done);
        reported = done;
      }
      if (!stop.load() && cancelled()) stop.store(true);
      lock.lock();
    }
  }
  for (std::thread& t : pool) t.join();
  if (stop.load() && doneRows.load() < total) return RenderStatus::Cancelled;
  report(total);
  return RenderStatus::Done;
}

}  // namespace trel::ff
