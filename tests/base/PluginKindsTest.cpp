#include "base/PluginKinds.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace trel {
namespace {

using K = PluginKind;

struct Case {
  const char* name;
  PluginName expected;
};

TEST(PluginKinds, EveryFormOfEveryKindIsKnownWhateverTheCase) {
  const std::vector<Case> cases = {
      {"Blur.8bf", {K::Photoshop, false, false}},         {"Blur._bf", {K::Photoshop, true, false}},
      {"Blur_8bf", {K::Photoshop, true, true}},           {"Video.prm", {K::Premiere, false, false}},
      {"Video_prm", {K::Premiere, true, true}},           {"Video._rm", {K::Premiere, true, false}},
      {"Glow.aex", {K::AfterEffects, false, false}},      {"Glow_aex", {K::AfterEffects, true, true}},
      {"Glow._ex", {K::AfterEffects, true, false}},       {"Mac.bin", {K::MacFilterFactory, false, false}},
      {"BLUR.8BF", {K::Photoshop, false, false}},         {"Video_PRM", {K::Premiere, true, true}},
      {"/a/b.c/Blur._BF", {K::Photoshop, true, false}},   {".8bf", {K::Photoshop, false, false}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(ClassifyPluginName(c.name), c.expected);
  }
}

TEST(PluginKinds, NamesThatOnlyLookLikePluginsAreNot) {
  // The toggle understands ".8b-" and ".pr-", and the file box shows ".ae-",
  // but no host or reader takes them for plugins; "_.rm" isn't a form at all.
  for (const char* name : {"Blur.8b-", "Video.pr-", "Glow.ae-", "Video_.rm", "Blur8bf", "8bf", "bf", "",
                           "Blur.8bfx", "Blur.8bf/", "Mac_bin", "Blur.afs", "Blur.zip", "Blur.8be"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(ClassifyPluginName(name));
    EXPECT_FALSE(IsAdobePluginName(name));
    EXPECT_FALSE(IsFilterFactoryPluginName(name));
  }
}

TEST(PluginKinds, QuestionsOverKindsAgreeWithTheClassifier) {
  struct Row {
    const char* name;
    bool adobe, photoshop, filterFactory, source;
  };
  for (const Row& r : std::vector<Row>{{"a.8bf", true, true, true, false},   {"a_8bf", true, true, true, false},
                                       {"a._rm", true, false, true, false},  {"a._ex", true, false, false, false},
                                       {"a.aex", true, false, false, false}, {"a.bin", false, false, true, false},
                                       {"a.AFS", false, false, false, true}, {"a.pff", false, false, false, true},
                                       {"a.txt", false, false, false, true}, {"a.ffx", false, false, false, true},
                                       {"a.ffl", false, false, false, false}}) {
    SCOPED_TRACE(r.name);
    EXPECT_EQ(IsAdobePluginName(r.name), r.adobe);
    EXPECT_EQ(IsPhotoshopFilterName(r.name), r.photoshop);
    EXPECT_EQ(IsFilterFactoryPluginName(r.name), r.filterFactory);
    EXPECT_EQ(IsFilterSourceName(r.name), r.source);
  }
}

TEST(PluginKinds, TypedNamesNeedAPointOrAnUnderscoreBeforeTheirExtension) {
  const std::vector<std::pair<const char*, PluginName>> cases = {
      {"Frame.tub", {K::UserType, false, false}}, {"Frame_tub", {K::UserType, true, true}},
      {"Frame.TUB", {K::UserType, false, false}}, {"/p/x.tub", {K::UserType, false, false}},
      {"Frametub", {}},                           {"tub", {}},
      {".tub", {K::UserType, false, false}},      {"Frame.tubx", {}},
      {"Frame-tub", {}}};
  for (const auto& [name, expected] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ClassifyTypedName(name, "tub"), expected);
  }
  // Extensions of any length; none matches an empty one.
  EXPECT_TRUE(ClassifyTypedName("Brush.abr5", "ABR5"));
  EXPECT_TRUE(ClassifyTypedName("a.x", "x"));
  EXPECT_FALSE(ClassifyTypedName("a.", ""));
  EXPECT_FALSE(ClassifyTypedName("ab", "abc"));
}

}  // namespace
}  // namespace trel
