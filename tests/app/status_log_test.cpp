#include "app/status_log.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "app/option_reference.h"
#include "tests/support/temporary_folder.h"

namespace {

template <typename Speak>
std::string Spoken(Speak speak) {
  testing::internal::CaptureStdout();
  speak();
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

struct Message {
  int code;
  const char* text;
  std::string console;
  std::string log;
};

std::vector<Message> Messages() {
  const std::string folder = "\nCannot create folder c:\\x%d\n or it is not available for writing\nConverting failed\n";
  std::vector<Message> messages{
      {0, "t", "   Processing", "   Processing"},
      {1, "t", "   Saving", "   Saving"},
      {2, "t", ".", "."},
      {3, "t", "\r\n", "\r\n"},
      {4, "a%s.jpg", " a%s.jpg", "a%s.jpg"},
      {5, "t", "..Loaded\n", "..Loaded\n"},
      {6, "t", "..Ready\n", "..Ready\n"},
      {7, "t", "Task finished\n", "Task finished\n"},
      {8, "t", "", ""},
      {9, "t", "..Loading failed\n", "..Loading failed\n"},
      {10, "t", "..Converting failed\n", "..Converting failed\n"},
      {11, "c:\\x%d", folder, folder},
      {12, "t", "   Cannot create too small GIF file\n", "   Cannot create too small GIF file\n"},
      {13, "t", "..Ok\r\n", "..Ok\r\n"},
      {14, "t", "", ""},
      {-1, "t", "", ""},
      {2147483647, "t", "", ""},
  };
  return messages;
}

TEST(StatusLog, SaysTheTextOfEachCode) {
  for (const Message& message : Messages()) {
    const test_support::TemporaryFolder tree;
    app::StatusLog log;
    EXPECT_EQ(Spoken([&] { log.Report(message.code, message.text); }), message.console) << message.code;
    EXPECT_TRUE(tree.Contents().empty());
    log.path = tree.Text("ZEFA.log").c_str();
    EXPECT_EQ(Spoken([&] { log.Report(message.code, message.text); }), message.console) << message.code;
    EXPECT_EQ(tree.Read("ZEFA.log"), message.log) << message.code;
  }
}

TEST(StatusLog, KeepsOneRunInItsFile) {
  const test_support::TemporaryFolder tree;
  tree.Write("ZEFA.log", "from an earlier run\n");
  app::StatusLog log;
  log.path = tree.Text("ZEFA.log").c_str();
  const std::string console = Spoken([&] {
    log.ReportCount(3);
    log.Report(4, "a.jpg");
    log.Report(13, "");
    log.Report(0, "");
    log.Report(2, "");
  });
  EXPECT_EQ(console, " 3 graphic files found\n\n a.jpg..Ok\r\n   Processing.");
  EXPECT_EQ(tree.Read("ZEFA.log"), " 3 graphic files found\n\na.jpg..Ok\r\n   Processing.");
}

// Its folder comes into being with the first output only.
TEST(StatusLog, TriesAgainAtEachMessage) {
  const test_support::TemporaryFolder tree;
  app::StatusLog log;
  log.path = tree.Text("later/ZEFA.log").c_str();
  EXPECT_EQ(Spoken([&] {
              log.ReportCount(1);
              log.Report(0, "");
            }),
            " 1 graphic files found\n\n   Processing");
  tree.MakeFolder("later");
  Spoken([&] { log.Report(13, ""); });
  EXPECT_EQ(tree.Read("later/ZEFA.log"), "..Ok\r\n");
}

TEST(StatusLog, SpeaksInSpiteOfALogThatIsNoFile) {
  const test_support::TemporaryFolder tree;
  tree.MakeFolder("ZEFA.log");
  app::StatusLog log;
  log.path = tree.Text("ZEFA.log").c_str();
  EXPECT_EQ(Spoken([&] {
              log.ReportCount(0);
              log.Report(6, "");
            }),
            " 0 graphic files found\n\n..Ready\n");
}

TEST(StatusLog, TakesFoldersOfAnyLength) {
  const std::string folder(5000, 'f');
  app::StatusLog log;
  const std::string console = Spoken([&] { log.Report(11, folder.c_str()); });
  EXPECT_NE(console.find(folder + "\n or it is"), std::string::npos);
}

TEST(StatusLog, ProgressIsADotThatNeverStops) {
  const test_support::TemporaryFolder tree;
  app::RunLog().path = tree.Text("ZEFA.log").c_str();
  glib::ProgressInfo info;
  std::uint8_t answer = 0;
  EXPECT_EQ(Spoken([&] {
              answer = app::OnProgress(&info);
              answer = static_cast<std::uint8_t>(answer & app::OnProgress(nullptr));
            }),
            "..");
  EXPECT_EQ(answer, 1);
  EXPECT_EQ(tree.Read("ZEFA.log"), "..");
  app::RunLog().path = "";
}

TEST(StatusLog, FramesTheBanner) {
  const std::string banner = Spoken([] { app::StatusLog().ShowBanner(); });
  const std::string blank = "//" + std::string(75, ' ') + "//\n";
  EXPECT_EQ(banner, "\n//" + std::string(73, '=') + "//\n" + blank +
                        "//                         Orvane Group International                        //\n" + blank +
                        "//" + std::string(28, ' ') + app::kHostName + std::string(28, ' ') + "//\n" + blank + "//" +
                        std::string(75, '=') + "//\n\n");
}

TEST(StatusLog, HelpsOnBothStreams) {
  testing::internal::CaptureStderr();
  const std::string help = Spoken([] { app::StatusLog().ShowHelp(); });
  const std::string reference = testing::internal::GetCapturedStderr();
  EXPECT_EQ(help, std::string(" Do you have any troubles or questions?\n Feel free to ask us in: http://") +
                      app::kHostName + "/support/index.htm\n\n" + std::string(47, ' ') + "With best regards,\n" +
                      std::string(47, ' ') + "Orvane Team\n");
  EXPECT_EQ(reference, std::string(app::kOptionReference) + "\n");
}

}  // namespace
