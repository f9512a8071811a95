// The demo collection the run script opens: every source in data/demo/ was
// compiled into a plugin that reads back as the filter it came from, with
// code the engine takes; two of them are disabled; the library holds its
// filters; the categories give Plugin View something to show.
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <set>

#include "filter/Dispatch.h"
#include "filter/FFL.h"
#include "filter/ProgramFolder.h"
#include "host/ff/FFEngine.h"
#include "support/RecordingShell.h"

namespace trel {
namespace {

TEST(DemoCollection, EverySourceIsAWorkingPluginTwoDisabledAndALibrary) {
  const QString demo = TREL_DEMO_DIR;
  const QString sources = QString(TREL_SHIPPED_DATA_DIR) + "/demo";
  test::RecordingShell shell;
  FilterEnv env;
  env.shell = &shell;
  const QStringList txt = QDir(sources).entryList({"*.txt"}, QDir::Files);
  ASSERT_GE(txt.size(), 24);
  int disabled = 0;
  std::set<std::string> categories;
  for (const QString& name : txt) {
    FFFilter source, plugin;
    ASSERT_TRUE(LoadItFile(source, sources.toStdString() + "/", name.toStdString(), env)) << name.toStdString();
    const QString stem = QFileInfo(name).completeBaseName();
    QString compiled = stem + ".8bf";
    if (!QFileInfo::exists(demo + "/" + compiled)) {
      compiled = stem + "._bf";  // disabled by renaming
      ++disabled;
    }
    ASSERT_TRUE(QFileInfo::exists(demo + "/" + compiled)) << stem.toStdString();
    ASSERT_TRUE(LoadItFile(plugin, demo.toStdString() + "/", compiled.toStdString(), env)) << compiled.toStdString();
    EXPECT_EQ(plugin.title, source.title);
    EXPECT_EQ(plugin.category, source.category);
    EXPECT_EQ(plugin.codeR, source.codeR);
    ff::CompileError error;
    EXPECT_TRUE(ff::CompileFilter({plugin.codeR, plugin.codeG, plugin.codeB, plugin.codeA}, &error).valid())
        << stem.toStdString() << ": " << error.message;
    categories.insert(plugin.category);
  }
  EXPECT_EQ(disabled, 2);
  EXPECT_GE(categories.size(), 5u);
  FFLLibrary library;
  ASSERT_TRUE(ReadFFLLibrary((demo + "/Trel Demo Effects.ffl").toStdString(), library));
  EXPECT_EQ(library.items.size(), 8u);
  EXPECT_TRUE(library.problem.empty()) << library.problem;
}

}  // namespace
}  // namespace trel
