// Writes the seed corpora of the fuzz targets from the project's own material:
// the sample filters, the generated template plugins, plugins compiled from the
// samples, and plugin files built by the test support's PE builder. Each seed
// starts with the choice byte its target reads first.
//
//   trel_fuzz_seeds SAMPLES_FOLDER OUTPUT_FOLDER
//
// OUTPUT_FOLDER/<target>/ holds the seeds of each target.
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "Templates.h"
#include "catalogue/PluginTypes.h"
#include "filter/BatchConvert.h"
#include "filter/Dispatch.h"
#include "filter/FFL.h"
#include "hostprotocol/HostProtocol.h"
#include "settings/ListFiles.h"
#include "support/PeBuilder.h"

namespace fs = std::filesystem;

namespace {

std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class Corpus {
 public:
  Corpus(const fs::path& root, const std::string& target) : folder_(root / target) {
    fs::create_directories(folder_);
  }
  void Add(uint8_t choice, const std::string& bytes) {
    std::ofstream out(folder_ / ("seed" + std::to_string(++count_)), std::ios::binary);
    out.put(static_cast<char>(choice));
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  int count() const { return count_; }

 private:
  fs::path folder_;
  int count_ = 0;
};

std::string Lower(std::string s) {
  for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// The choice bytes must agree with the tables at the top of each target.
uint8_t TextSourceChoice(const std::string& ext) {
  return ext == ".afs" ? 0 : ext == ".pff" ? 1 : ext == ".ffx" ? 2 : 3;
}
uint8_t CompiledChoice(const std::string& ext, size_t size) {
  const std::pair<size_t, const char*> forms[] = {
      {49152, ".8bf"}, {49664, ".8bf"}, {50176, ".8bf"}, {53760, ".8bf"}, {57344, ".8bf"},
      {99712, ".bin"}, {99840, ".bin"}, {50176, ".prm"}, {50688, ".prm"}, {53248, ".prm"}};
  for (uint8_t i = 0; i < std::size(forms); ++i)
    if (forms[i].first == size && ext == forms[i].second) return i;
  return ext == ".prm" ? 10 : 11;
}
uint8_t IdentificationChoice(const std::string& ext) {
  const char* const names[] = {".8bf", ".prm", ".bin", "._bf", ".aex", ".8bi",
                               ".8be", ".plg", ".txt", ".afs", ".dll"};
  for (uint8_t i = 0; i < std::size(names); ++i)
    if (ext == names[i]) return i;
  return 10;
}

std::string CodeLines(const trel::FFFilter& f) {
  return f.codeR + "\n" + f.codeG + "\n" + f.codeB + "\n" + f.codeA;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s SAMPLES_FOLDER OUTPUT_FOLDER\n", argv[0]);
    return 2;
  }
  const fs::path samples(argv[1]);
  const fs::path out(argv[2]);
  const fs::path work = out / "work";
  fs::remove_all(work);
  const fs::path program = work / "program";
  const fs::path made = work / "made";
  fs::create_directories(program);
  fs::create_directories(made);

  trel::FilterEnv env;
  env.options.programFolder = program.string() + "/";
  Corpus textSources(out, "text_sources"), compiled(out, "compiled_plugins"), ffl(out, "ffl_libraries"),
      identification(out, "plugin_identification"), ffCode(out, "ff_code"), lists(out, "list_files");

  for (const auto& t : trel::gen::AllTemplates()) {
    const std::string bytes = trel::gen::BuildTemplate(t.kind);
    std::ofstream(program / t.name, std::ios::binary) << bytes;
    const std::string ext = Lower(fs::path(t.name).extension().string());
    compiled.Add(CompiledChoice(ext == ".dll" ? ".8bf" : ext, bytes.size()), bytes);
    identification.Add(IdentificationChoice(ext == ".dll" ? ".8bf" : ext), bytes);
  }

  // Every sample, and every entry of the sample library, in each format the
  // converter writes; the compiled forms from each template.
  std::vector<trel::FFFilter> filters;
  for (const auto& entry : fs::directory_iterator(samples)) {
    const std::string ext = Lower(entry.path().extension().string());
    const std::string bytes = Slurp(entry.path());
    if (ext == ".ffl") {
      ffl.Add(4, "warm" + bytes);
      ffl.Add(0, bytes);
      trel::FFFilter f;
      trel::Convertffl(f, entry.path().string(), (made / "ffl").string() + "/", trel::OutputFormat::TXT, env);
      continue;
    }
    textSources.Add(TextSourceChoice(ext), bytes);
    identification.Add(IdentificationChoice(ext), bytes);
    trel::FFFilter f;
    if (trel::LoadItFile(f, entry.path().parent_path().string() + "/", entry.path().filename().string(), env))
      filters.push_back(f);
  }
  for (const auto& entry : fs::directory_iterator(made / "ffl")) {
    trel::FFFilter f;
    if (trel::ReadFFfile(f, entry.path().string(), env)) filters.push_back(f);
  }
  const trel::CompileTemplate templates[] = {trel::CompileTemplate::FilterFactory30,
                                             trel::CompileTemplate::FilterFactory304,
                                             trel::CompileTemplate::Macintosh};
  int n = 0;
  for (trel::FFFilter f : filters) {
    ffCode.Add(static_cast<uint8_t>(n * 0x45 + 0x09), CodeLines(f));
    const fs::path folder = made / ("f" + std::to_string(n++));
    fs::create_directories(folder);
    for (trel::OutputFormat format : trel::kOutputFormats) {
      if (format == trel::OutputFormat::Plugin8bf) continue;  // compiled below, once per template
      const fs::path sub = folder / ("format" + std::to_string(static_cast<int>(format)));
      fs::create_directories(sub);
      trel::WriteByFormat(f, sub.string() + "/", format, env, nullptr);
    }
    for (auto choice : templates) {
      trel::FilterEnv compileEnv = env;
      compileEnv.options.compile.templateChoice = choice;
      const fs::path sub = folder / std::to_string(static_cast<int>(choice));
      fs::create_directories(sub);
      trel::WriteByFormat(f, sub.string() + "/", trel::OutputFormat::Plugin8bf, compileEnv, nullptr);
    }
  }
  std::vector<std::string> sources;
  for (const auto& entry : fs::recursive_directory_iterator(made)) {
    if (!entry.is_regular_file()) continue;
    const std::string ext = Lower(entry.path().extension().string());
    const std::string bytes = Slurp(entry.path());
    if (ext == ".afs" || ext == ".pff" || ext == ".txt" || ext == ".ffx") {
      textSources.Add(TextSourceChoice(ext), bytes);
      sources.push_back(entry.path().string());
    } else {
      compiled.Add(CompiledChoice(ext, bytes.size()), bytes);
      identification.Add(IdentificationChoice(ext), bytes);
    }
  }
  const std::string library = (work / "made.ffl").string();
  trel::cmd_CreateFFL(library, sources, env);
  ffl.Add(3, "Ripple" + Slurp(library));

  // Plugins of other makers, as the identification meets them.
  using namespace trel::test;
  trel::test::PeOptions pe32;
  pe32.pe32plus = false;
  identification.Add(0, PiplPlugin("Trel Samples", "Warm Tone"));
  identification.Add(0, PiplPlugin("Trel Samples", "Warm Tone", pe32));
  identification.Add(0, BuildPe({Pimi("Old Style"), Bfm8("Older Title")}));
  identification.Add(4, BuildPe({Pipl({"Effects", "Glow", false, 3, true})}));
  identification.Add(5, BuildPe({Version({{"FileDescription", "A format plugin"},
                                          {"InternalName", "fmt"},
                                          {"ProductName", "Formats"}})}));
  identification.Add(1, PremiereVideo("Video Glow", 1));
  identification.Add(1, PremiereVideo("Video Glow", 4));
  identification.Add(1, PremiereAudio("Echo"));
  identification.Add(1, PremiereTransition("Wipe", "Wipe Left"));
  identification.Add(1, PlaceBytes(300, {{40, PiplProperty("catg", "Cat")}, {80, PiplProperty("name", "Title")}}));

  // The list files as the preferences write them.
  trel::PluginTypeList rows;
  for (const auto& text : trel::DefaultPluginTypeRows()) rows.push_back({text, text.size() % 2 == 0});
  const std::string typesFile = (work / "PlugTypes.ini").string();
  trel::SaveList(typesFile, rows, true);
  lists.Add(2, Slurp(typesFile));
  trel::SaveList(typesFile, rows, false);
  lists.Add(0, Slurp(typesFile));
  const std::string foldersFile = (work / "FolderList.log").string();
  trel::SaveList(foldersFile, std::vector<trel::ListEntry>{{"/home/user/plugins/", true},
                                                           {"/mnt/c/Program Files/Adobe, Plug-ins/", false},
                                                           {"\"quoted, folder\"", true}},
                 true);
  lists.Add(3, Slurp(foldersFile));

  // The shipped skins and link lists, beside the samples in the data folder.
  Corpus skins(out, "skins_and_links");
  const fs::path data = samples.parent_path();
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(data / "interface", ec))
    if (Lower(entry.path().extension().string()) == ".des") skins.Add(0, Slurp(entry.path()));
  for (const char* name : {"FilterURLs.txt", "TubeURLs.txt"})
    if (fs::exists(data / name)) skins.Add(1, Slurp(data / name));

  // The plugin host's requests and answers as the two sides write them, and
  // a stream with a plugin's chatter around an answer.
  namespace hp = trel::hostprotocol;
  Corpus channel(out, "host_protocol");
  const std::string wild = "Z:\\home\\me\\Plug-ins 100%\\line\nbreak\tx.8bf";
  auto body = [](std::string line) {
    line.erase(0, line.find_first_not_of('\n'));
    if (!line.empty()) line.pop_back();
    return line;
  };
  channel.Add(0, body(hp::FormatRequest({1, hp::Verb::Probe, wild, "", "", "", false})));
  channel.Add(0, body(hp::FormatRequest({2, hp::Verb::Run, wild, "Z:\\tmp\\in.trpx", "Z:\\tmp\\out.trpx", "", true})));
  channel.Add(0, body(hp::FormatRequest({3, hp::Verb::About, wild, "", "", "", false})));
  channel.Add(0, body(hp::FormatRequest({4, hp::Verb::Quit, "", "", "", "", false})));
  channel.Add(1, body(hp::FormatAnswer({5, 0, ""})));
  channel.Add(1, body(hp::FormatAnswer({6, 10, "the plugin needs MSVCRT10.dll, which is not installed\n"})));
  channel.Add(2, std::string(1, '\x01') + "chatter" + hp::FormatAnswer({2, 7, "crash"}) + "no line end" +
                     hp::FormatAnswer({1, 0, ""}));
  channel.Add(3, wild);

  fs::remove_all(work);
  std::printf("seeds: text_sources %d, compiled_plugins %d, ffl_libraries %d, plugin_identification %d, "
              "ff_code %d, list_files %d, skins_and_links %d, host_protocol %d\n",
              textSources.count(), compiled.count(), ffl.count(), identification.count(), ffCode.count(),
              lists.count(), skins.count(), channel.count());
  return 0;
}
