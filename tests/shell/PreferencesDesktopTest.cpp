// What the program hands the desktop: help pages, mail, web addresses, file
// types, and the download list's window.
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include "ShellTesting.h"
#include "settings/ui/DesktopServices.h"
#include "settings/ui/FrmDownload.h"

namespace trel {
namespace {

using namespace test;

// Sets an environment variable for one test and puts the old value back.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const QByteArray& value) : name_(name), had_(qEnvironmentVariableIsSet(name)) {
    old_ = qgetenv(name);
    qputenv(name, value);
  }
  ~ScopedEnv() { had_ ? qputenv(name_, old_) : qunsetenv(name_); }

 private:
  const char* name_;
  bool had_;
  QByteArray old_;
};

// Records what would have gone to the browser or mail program.
class OpenerRecorder {
 public:
  explicit OpenerRecorder(bool result = true) : saved_(DesktopOpener()) {
    DesktopOpener() = [this, result](const QString& url) {
      opened.push_back(url);
      return result;
    };
  }
  ~OpenerRecorder() { DesktopOpener() = saved_; }
  std::vector<QString> opened;

 private:
  UrlOpener saved_;
};

TEST(PreferencesDesktopTest, ABrowserOrMailProgramIsFoundByTheTypesDesktopEntriesOrBrowser) {
  // A desktop with nothing installed: no applications, no browser command.
  TempDir data, empty;
  ScopedEnv home("XDG_DATA_HOME", QByteArray::fromStdString(data.path()));
  ScopedEnv dirs("XDG_DATA_DIRS", QByteArray::fromStdString(empty.path()));
  ScopedEnv path("PATH", QByteArray::fromStdString(empty.path()));
  ScopedEnv browser("BROWSER", "");
  const QUrl page = QUrl::fromLocalFile(QString::fromStdString(data.Write("Help.htm", "<html></html>")));
  const QUrl mail("mailto:someone@example.org?subject=Feedback");
  // What the desktop's opener asks first: without an answer, the messages
  // of MailWebAndHelpGoToTheDesktop... follow.
  EXPECT_FALSE(HasHandlerFor(page));
  EXPECT_FALSE(HasHandlerFor(mail));
  // An application that takes the type, or a browser named in $BROWSER, is enough.
  std::filesystem::create_directories(data.file("applications"));
  data.Write("applications/mail.desktop",
             "[Desktop Entry]\nType=Application\nName=Mail\nExec=mail %u\nMimeType=x-scheme-handler/mailto;\n");
  EXPECT_TRUE(HasHandlerFor(mail));
  EXPECT_FALSE(HasHandlerFor(page));
  ScopedEnv named("BROWSER", "somebrowser");
  EXPECT_TRUE(HasHandlerFor(page));
}

TEST(PreferencesDesktopTest, AssociationsAreRegisteredInTheUserDataFolderAndRemovedWhenTurnedOff) {
  TempDir data, config;
  const ScopedEnv dataHome("XDG_DATA_HOME", QByteArray::fromStdString(data.path()));
  const ScopedEnv configHome("XDG_CONFIG_HOME", QByteArray::fromStdString(config.path()));
  const QString home = QString::fromStdString(data.path());
  const AssociationResult on = SetAssociations({1, 0, 1, 1, 0}, "/opt/my trel/trel", home);
  const std::string desktop = data.Read("applications/trel.desktop");
  EXPECT_NE(desktop.find("MimeType=application/x-trel-8bf;application/x-trel-ffl;application/x-trel-afs;"),
            std::string::npos);
  EXPECT_NE(desktop.find("Exec=\"/opt/my trel/trel\" %f"), std::string::npos);  // a blank in the path is safe
  const std::string xml = data.Read("mime/packages/trel.xml");
  EXPECT_NE(xml.find("<glob pattern=\"*.ffl\"/>"), std::string::npos);
  EXPECT_EQ(xml.find("*.prm"), std::string::npos);
  if (!QStandardPaths::findExecutable("update-mime-database").isEmpty()) {
    // The database knows the type by its glob.
    EXPECT_NE(data.Read("mime/globs2").find("application/x-trel-afs:*.afs"), std::string::npos);
  }
  if (!QStandardPaths::findExecutable("xdg-mime").isEmpty()) {
    QProcess query;
    query.start("xdg-mime", {"query", "default", "application/x-trel-8bf"});
    ASSERT_TRUE(query.waitForFinished(20000));
    EXPECT_EQ(query.readAllStandardOutput().trimmed(), "trel.desktop");
    EXPECT_TRUE(on.problems.isEmpty()) << on.problems.join("; ").toStdString();
  }
  // All boxes off: the entry and the types go again.
  SetAssociations({0, 0, 0, 0, 0}, "/opt/my trel/trel", home);
  EXPECT_FALSE(data.Exists("applications/trel.desktop"));
  EXPECT_FALSE(data.Exists("mime/packages/trel.xml"));
  if (!QStandardPaths::findExecutable("update-mime-database").isEmpty()) {
    EXPECT_EQ(data.Read("mime/globs2").find("x-trel"), std::string::npos);
  }
}

TEST(PreferencesDesktopTest, AnUnwritableDataFolderIsReportedNotIgnored) {
  TempDir data;
  data.Write("blocker", "x");
  const AssociationResult result =
      SetAssociations({1, 1, 1, 1, 1}, "/usr/bin/trel", QString::fromStdString(data.file("blocker")));
  EXPECT_FALSE(result.problems.isEmpty());
  EXPECT_EQ(data.Read("blocker"), "x");
}

TEST(PreferencesDesktopTest, MailWebAndHelpGoToTheDesktopAndSayWhenNothingTakesThem) {
  RecordingShell shell;
  {
    OpenerRecorder opener;
    EXPECT_TRUE(SendEmail(shell, "a@b.example", "Feedback on Trel", "x&y"));
    EXPECT_TRUE(ShowHelp(shell, "/prog/", "Prefs_FPA.htm"));
    ASSERT_EQ(opener.opened.size(), 2u);
    // Not escaped, as it always was: an "&" in the body starts a new field.
    EXPECT_EQ(opener.opened[0], "mailto:a@b.example?subject=Feedback on Trel&body=x&y");
    EXPECT_EQ(opener.opened[1], "file:///prog/help/Prefs_FPA.htm");
    EXPECT_TRUE(shell.boxes.empty());
  }
  OpenerRecorder refusing(false);
  EXPECT_FALSE(SendEmail(shell, "a@b.example", "s", "b"));
  EXPECT_FALSE(ShowURL(shell, "https://example.org"));
  ASSERT_EQ(shell.boxes.size(), 2u);
  EXPECT_EQ(shell.boxes[0].text, "You have no email application installed!");
  EXPECT_EQ(shell.boxes[1].text, "You have no HTML Viewer installed!");
}

TEST(PreferencesDesktopTest, AnInternetShortcutIsALinkEntryAndASecondOneOverwrites) {
  TempDir dir;
  const QString folder = QString::fromStdString(dir.file("Favorites"));
  EXPECT_FALSE(CreateInternetShortcut("https://one.example", "Trel", folder).isEmpty());
  const QString path = CreateInternetShortcut("https://two.example", "Trel", folder);
  ASSERT_FALSE(path.isEmpty());
  EXPECT_EQ(dir.Read("Favorites/Trel.desktop"), "[Desktop Entry]\nType=Link\nName=Trel\nURL=https://two.example\n"
                                                "Icon=text-html\n");
  dir.Write("plain", "x");
  EXPECT_TRUE(CreateInternetShortcut("https://x.example", "Trel", QString::fromStdString(dir.file("plain"))).isEmpty());
}

TEST(PreferencesDesktopTest, CommandLinesForAppsAndDesktopEntries) {
  struct Row {
    QString exec;
    QStringList expected;
  };
  const Row rows[] = {
      {"gimp-2.10 %U", {"gimp-2.10", "/x/a b.png"}},
      {"\"/opt/My App/run\" --new %f %i", {"/opt/My App/run", "--new", "/x/a b.png"}},
      {"viewer", {"viewer", "/x/a b.png"}},  // no field code: the file goes last
  };
  for (const Row& row : rows) EXPECT_EQ(ExecCommand(row.exec, "/x/a b.png"), row.expected) << row.exec.toStdString();
  EXPECT_EQ(AppCommand("/usr/bin/gimp %1", "/x/a.png"), (QStringList{"/usr/bin/gimp", "/x/a.png"}));
  EXPECT_EQ(AppCommand("/usr/bin/gimp %1", ""), QStringList{"/usr/bin/gimp"});
  EXPECT_EQ(AppCommand("/usr/bin/gimp", "/x/a.png"), QStringList{"/usr/bin/gimp"});
}

TEST(PreferencesDesktopTest, OpenWithListsTheApplicationsRegisteredForTheType) {
  TempDir data;
  const ScopedEnv dataHome("XDG_DATA_HOME", QByteArray::fromStdString(data.path()));
  const ScopedEnv dataDirs("XDG_DATA_DIRS", QByteArray::fromStdString(data.file("none")));
  std::filesystem::create_directory(data.file("applications"));
  data.Write("applications/viewer.desktop",
             "[Desktop Entry]\nType=Application\nName=Viewer\nExec=viewer %f\nMimeType=image/png;text/plain;\n");
  data.Write("applications/hidden.desktop",
             "[Desktop Entry]\nType=Application\nName=Hidden\nExec=h\nNoDisplay=true\nMimeType=image/png;\n");
  data.Write("applications/other.desktop",
             "[Desktop Entry]\nType=Application\nName=Other\nExec=o\nMimeType=audio/mpeg;\n");
  const std::vector<DesktopApp> apps = AppsForMimeType("image/png");
  ASSERT_EQ(apps.size(), 1u);
  EXPECT_EQ(apps[0].name, "Viewer");
  EXPECT_EQ(apps[0].exec, "viewer %f");
}

TEST(PreferencesDesktopTest, PropertiesShowTheFactsOfAFile) {
  TempDir dir;
  const std::string path = dir.Write("notes.txt", "12345");
  QFile::setPermissions(QString::fromStdString(path), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  const auto factsOf = [](const std::string& file) {
    std::map<QString, QString> facts;
    for (const auto& [caption, value] : FileFacts(QString::fromStdString(file))) facts[caption] = value;
    return facts;
  };
  std::map<QString, QString> facts = factsOf(path);
  EXPECT_EQ(facts["Name"], "notes.txt");
  EXPECT_TRUE(facts["Size"].startsWith("5 bytes")) << facts["Size"].toStdString();
  EXPECT_EQ(facts["Type"], "text/plain");
  EXPECT_EQ(facts["Permissions"], "rw-------");
  EXPECT_FALSE(facts["Modified"].isEmpty());
  EXPECT_FALSE(facts["Owner"].isEmpty());
  PropertiesDialog dialog(QString::fromStdString(path));
  EXPECT_EQ(dialog.findChild<QLabel*>("FactSize")->text(), facts["Size"]);
  // A vanished file says so instead of inventing facts.
  EXPECT_EQ(factsOf(dir.file("gone"))["State"], "doesn't exist");
}

class FrmDownloadTest : public ::testing::Test {
 protected:
  TempDir prog;
  RecordingShell shell;
};

TEST_F(FrmDownloadTest, TwoTabsEachWithItsFileAndADoubleClickOpensTheAddress) {
  prog.Write("FilterURLs.txt", "Site A;https://a.example\nNo address\n");
  prog.Write("TubeURLs.txt", "Tubes;https://tubes.example\n");
  OpenerRecorder opener;
  FrmDownload window(prog.path(), shell);
  ASSERT_EQ(window.list()->count(), 2);
  EXPECT_EQ(window.label2()->text(), "https://a.example");
  emit window.list()->itemDoubleClicked(window.list()->item(0));
  window.list()->setCurrentRow(1);
  EXPECT_EQ(window.label2()->text(), "");
  window.mnuConnect_Click();  // no address: nothing happens
  EXPECT_EQ(opener.opened, std::vector<QString>{"https://a.example"});
  window.mnuCopyURL_Click();
  window.TabStrip1_Click(1);
  EXPECT_EQ(window.list()->item(0)->text(), "Tubes");
  EXPECT_TRUE(shell.boxes.empty());  // nothing changed, nothing asked
  window.mnuShareList_Click();
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "The URLs of this tab sheet are saved under\n\n" + prog.path() + "TubeURLs.txt");
}

TEST_F(FrmDownloadTest, AddEditDeleteAndMoveAreSavedWithAQuestion) {
  prog.Write("FilterURLs.txt", "One;u1\nTwo;u2\n");
  FrmDownload window(prog.path(), shell);
  std::vector<QString> answers = {"Three", "u3"};
  std::vector<QString> titles;
  window.inputBox = [&](const QString& title, const QString&, QString& text) {
    titles.push_back(title);
    if (answers.empty()) return false;
    text = answers.front();
    answers.erase(answers.begin());
    return true;
  };
  window.mnuAdd_Click();
  EXPECT_EQ(titles.size(), 2u);  // a name, then an address
  EXPECT_EQ(window.list()->currentRow(), 2);
  answers = {"Two renamed"};
  window.list()->setCurrentRow(1);
  window.mnuName_Click(0);
  EXPECT_EQ(window.list()->item(1)->text(), "Two renamed");
  answers = {""};  // an empty answer changes nothing
  window.mnuName_Click(1);
  EXPECT_EQ(window.links().urls[1], "u2");
  window.list()->setCurrentRow(0);
  window.MoveItem(-1);  // at the top: nothing
  window.MoveItem(+1);
  EXPECT_EQ(window.list()->currentRow(), 1);
  window.list()->setCurrentRow(2);
  window.mnuDelete_Click();
  EXPECT_EQ(window.list()->currentRow(), 1);
  // Saying No keeps the file as it was.
  shell.nextAnswer = MsgResult::No;
  window.mnuSave_Click();
  EXPECT_EQ(prog.Read("FilterURLs.txt"), "One;u1\nTwo;u2\n");
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Do you want to save the changes in the Plugins List ?");
  // Another change, then a tab switch: Yes writes it.
  answers = {"Four", "u4"};
  window.mnuAdd_Click();
  shell.nextAnswer = MsgResult::Yes;
  window.TabStrip1_Click(1);
  EXPECT_EQ(prog.Read("FilterURLs.txt"), "Two renamed;u2\nOne;u1\nFour;u4\n");
}

TEST_F(FrmDownloadTest, AnUnwritableListIsReported) {
  prog.Write("blocker", "x");
  FrmDownload window(prog.file("blocker/"), shell);
  EXPECT_EQ(window.list()->count(), 0);
  window.inputBox = [](const QString&, const QString&, QString& text) { return text = "x", true; };
  window.mnuAdd_Click();
  shell.nextAnswer = MsgResult::Yes;
  EXPECT_FALSE(window.SaveLinks(0, true));
  EXPECT_NE(shell.boxes.back().text.find("could not be written"), std::string::npos);
}

}  // namespace
}  // namespace trel
