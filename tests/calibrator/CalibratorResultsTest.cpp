/// How results leave a calibrator: getters and their guards, result file, status answer.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "Calibrator.h"
#include "JSON.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

namespace {

const char* const UNREACHABLE = "ERROR : Cannot perform any action while computing calibration.\n";
const char* const NOT_PERFORMED = "ERROR : The calibration process has not been performed yet.\n";

class Results : public ::testing::Test {
 protected:
  void SetUp() override { completed_ = unit::CompletedCalibrator(); }

  static std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  support::TemporaryFolder folder_;
  unit::ScopedCurrentFolder current_{folder_.Path()};
  std::unique_ptr<Calibrator> completed_;
};

TEST_F(Results, AreGivenInEveryStatusButProgress) {
  for (const int status : {100, 200, 300, 399, 401, 500}) {
    completed_->SetStatus(status);
    EXPECT_FALSE(completed_->GetK().empty()) << status;
    EXPECT_FALSE(completed_->GetDistCoefs().empty()) << status;
    EXPECT_FALSE(completed_->GetStdDevIntrinsics().empty()) << status;
    EXPECT_FALSE(completed_->GetPerViewErrors().empty()) << status;
    EXPECT_FALSE(completed_->GetRotationVectors().empty()) << status;
    EXPECT_FALSE(completed_->GetTranslationVectors().empty()) << status;
    EXPECT_GT(completed_->GetRMS(), 0.0F) << status;
  }
}

TEST_F(Results, AreWithheldDuringProgressWithoutAMessage) {
  completed_->SetStatus(Calibrator::STATUS_PROGRESS);
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_TRUE(completed_->GetK().empty());
              EXPECT_TRUE(completed_->GetDistCoefs().empty());
              EXPECT_TRUE(completed_->GetStdDevIntrinsics().empty());
              EXPECT_TRUE(completed_->GetPerViewErrors().empty());
              EXPECT_TRUE(completed_->GetRotationVectors().empty());
              EXPECT_TRUE(completed_->GetTranslationVectors().empty());
              EXPECT_EQ(completed_->GetRMS(), -1.0F);
            }),
            "");
}

TEST_F(Results, AreSharedWithTheCallerNotCopied) {
  EXPECT_EQ(completed_->GetK().data, completed_->GetK().data);
  EXPECT_EQ(completed_->GetPerViewErrors().data, completed_->GetPerViewErrors().data);
}

TEST_F(Results, OfTheOtherKindAreEmptyWithoutAMessage) {
  const auto stereo = unit::MakeCalibrator(Calibrator::STEREO);
  stereo->SetStatus(Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_TRUE(completed_->GetKLeft().empty());
              EXPECT_TRUE(completed_->GetDistCoefsLeft().empty());
              EXPECT_TRUE(completed_->GetKRight().empty());
              EXPECT_TRUE(completed_->GetDistCoefsRight().empty());
              EXPECT_TRUE(completed_->GetR().empty());
              EXPECT_TRUE(stereo->GetK().empty());
              EXPECT_TRUE(stereo->GetDistCoefs().empty());
              EXPECT_TRUE(stereo->GetStdDevIntrinsics().empty());
            }),
            "");
}

class UnreachableResults : public ::testing::TestWithParam<int> {};

TEST_P(UnreachableResults, AreNeverGivenAndReportedOutsideProgress) {
  for (const int kind : {Calibrator::MONOCULAR, Calibrator::STEREO}) {
    const auto calibrator = unit::MakeCalibrator(kind);
    calibrator->SetStatus(GetParam());
    bool empty = false;
    EXPECT_EQ(unit::PrintedBy([&] { empty = calibrator->GetT().empty(); }), UNREACHABLE);
    EXPECT_TRUE(empty);
    EXPECT_EQ(unit::PrintedBy([&] { empty = calibrator->GetE().empty(); }), UNREACHABLE);
    EXPECT_TRUE(empty);
    EXPECT_EQ(unit::PrintedBy([&] { empty = calibrator->GetF().empty(); }), UNREACHABLE);
    EXPECT_TRUE(empty);
    double baseline = -7.0;
    EXPECT_EQ(unit::PrintedBy([&] { baseline = calibrator->GetBaseline(); }), UNREACHABLE);
    EXPECT_EQ(baseline, 0.0);
  }
}

INSTANTIATE_TEST_SUITE_P(Statuses, UnreachableResults, ::testing::Values(100, 200, 300, 399, 1, 0, -1));

TEST(UnreachableResults, AreWithheldDuringProgressWithoutAMessage) {
  for (const int kind : {Calibrator::MONOCULAR, Calibrator::STEREO}) {
    const auto calibrator = unit::MakeCalibrator(kind);
    calibrator->SetStatus(Calibrator::STATUS_PROGRESS);
    EXPECT_EQ(unit::PrintedBy([&] {
                EXPECT_TRUE(calibrator->GetT().empty());
                EXPECT_TRUE(calibrator->GetE().empty());
                EXPECT_TRUE(calibrator->GetF().empty());
                EXPECT_EQ(calibrator->GetBaseline(), -1.0);
              }),
              "");
  }
}

TEST(UnreachableResults, AreEmptyAndUnreportedAboveTheGuard) {
  for (const int kind : {Calibrator::MONOCULAR, Calibrator::STEREO}) {
    const auto calibrator = unit::MakeCalibrator(kind);
    for (const int status : {401, 500}) {
      calibrator->SetStatus(status);
      EXPECT_EQ(unit::PrintedBy([&] {
                  EXPECT_TRUE(calibrator->GetT().empty());
                  EXPECT_TRUE(calibrator->GetE().empty());
                  EXPECT_TRUE(calibrator->GetF().empty());
                  EXPECT_EQ(calibrator->GetBaseline(), 0.0);
                }),
                "");
    }
  }
}

TEST_F(Results, AreWrittenWithTheExtensionAndReturnedAsText) {
  std::string text;
  EXPECT_EQ(unit::PrintedBy([&] { text = completed_->SaveResult(true, folder_.File("calib")); }), "");
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(support::ReadText(folder_.File("calib.json")), text);
  EXPECT_EQ(NamesIn(folder_.Path()), std::vector<std::string>{"calib.json"});
}

TEST_F(Results, AreWrittenWithTheExtensionTwiceWhenThePathHasIt) {
  completed_->SaveResult(true, "calib.json");
  EXPECT_EQ(NamesIn(folder_.Path()), std::vector<std::string>{"calib.json.json"});
}

TEST_F(Results, AreWrittenUnderKindDateAndTimeWithoutAPath) {
  const std::string text = completed_->SaveResult(true, "");
  const auto names = NamesIn(folder_.Path());
  ASSERT_EQ(names.size(), 1U);
  EXPECT_EQ(unit::WithDigitsHidden(names[0]), "mono9999999999:99:99.json");
  EXPECT_EQ(support::ReadText(names[0]), text);
}

TEST_F(Results, AreOnlyReturnedWithoutSave) {
  const std::string text = completed_->SaveResult(false, "calib");
  EXPECT_EQ(text, completed_->SaveResult(true, "calib"));
  std::filesystem::remove("calib.json");
  completed_->SaveResult(false, "");
  EXPECT_TRUE(NamesIn(folder_.Path()).empty());
}

TEST_F(Results, HoldTheMembersOfAMonocularFileInOrder) {
  const std::string text = completed_->SaveResult(false, "");
  const nlohmann::json file = nlohmann::json::parse(text);
  EXPECT_EQ(file.size(), 6U);
  EXPECT_EQ(file.at("sensor"), 0);
  EXPECT_EQ(file.at("imgWidth"), 640);
  EXPECT_EQ(file.at("imgHeight"), 480);
  EXPECT_EQ(file.at("error").get<double>(), static_cast<double>(completed_->GetRMS()));
  EXPECT_TRUE(file.at("error").is_number_float());
  std::vector<size_t> places;
  for (const char* key : {"cameraMatrix", "distCoefs", "error", "imgHeight", "imgWidth", "sensor"}) {
    places.push_back(text.find("\n    \"" + std::string(key) + "\": "));
    EXPECT_NE(places.back(), std::string::npos) << key;
  }
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
  EXPECT_EQ(text.front(), '{');
  EXPECT_EQ(text.back(), '}');
}

TEST_F(Results, ComeBackFromTheFileBitForBit) {
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
    completed_->ComputeCalibration(model);
    completed_->SaveResult(true, "calib");
    JSON file;
    ASSERT_TRUE(file.load("calib.json"));
    EXPECT_SAME_MAT(file.readMat("cameraMatrix"), completed_->GetK());
    EXPECT_SAME_MAT(file.readMat("distCoefs"), completed_->GetDistCoefs());
    EXPECT_EQ(static_cast<float>(file.readDouble("error")), completed_->GetRMS());
    EXPECT_EQ(file.readInt("sensor"), Calibrator::MONOCULAR);
  }
}

TEST_F(Results, RaiseTheLibrarysErrorWhenAMemberOfTheFileIsMissing) {
  for (const char* key : {"cameraMatrix", "distCoefs"}) {
    nlohmann::json file = nlohmann::json::parse(completed_->SaveResult(false, ""));
    file.erase(key);
    support::WriteText("broken.json", file.dump());
    JSON document;
    ASSERT_TRUE(document.load("broken.json"));
    EXPECT_THROW(document.readMat(key), nlohmann::json::type_error);
  }
}

TEST_F(Results, AreReportedButReturnedWhenTheFileCannotBeWritten) {
  const std::string path = folder_.File("missing/calib");
  std::string text;
  EXPECT_EQ(unit::PrintedBy([&] { text = completed_->SaveResult(true, path); }),
            "ERROR : Cannot save file: " + path + ".json\n");
  EXPECT_EQ(text, completed_->SaveResult(false, ""));
  EXPECT_FALSE(text.empty());
}

TEST_F(Results, AreNotSavedBeforeAComputation) {
  for (const int status : {Calibrator::STATUS_NOT_READY, Calibrator::STATUS_READY, 500}) {
    completed_->SetStatus(status);
    for (const bool save : {false, true}) {
      std::string text = "untouched";
      EXPECT_EQ(unit::PrintedBy([&] { text = completed_->SaveResult(save, ""); }), NOT_PERFORMED);
      EXPECT_EQ(text, "");
    }
  }
  EXPECT_TRUE(NamesIn(folder_.Path()).empty());
}

TEST_F(Results, AreNotSavedDuringProgressAndThatIsNotReported) {
  completed_->SetStatus(Calibrator::STATUS_PROGRESS);
  std::string text = "untouched";
  EXPECT_EQ(unit::PrintedBy([&] { text = completed_->SaveResult(true, "calib"); }), "");
  EXPECT_EQ(text, "");
  EXPECT_TRUE(NamesIn(folder_.Path()).empty());
}

TEST_F(Results, AreNotSavedWhenTheErrorNoLongerDescribesTheSnapshots) {
  completed_->AddPoints(unit::NoisyViews(1).front());
  completed_->SetStatus(Calibrator::STATUS_COMPLETED);
  std::string text = "untouched";
  EXPECT_EQ(unit::PrintedBy([&] { text = completed_->SaveResult(true, "calib"); }), "");
  EXPECT_EQ(text, "");
  EXPECT_TRUE(NamesIn(folder_.Path()).empty());
}

TEST_F(Results, AreNotSavedWithoutMatricesOrOfAnUnknownKind) {
  for (const int kind : {Calibrator::MONOCULAR, Calibrator::STEREO, 2, -1}) {
    const auto calibrator = unit::MakeCalibrator(kind);
    calibrator->SetStatus(Calibrator::STATUS_COMPLETED);
    std::string text = "untouched";
    EXPECT_EQ(unit::PrintedBy([&] { text = calibrator->SaveResult(true, "calib"); }), "");
    EXPECT_EQ(text, "");
  }
  EXPECT_TRUE(NamesIn(folder_.Path()).empty());
}

TEST_F(Results, AreGoneAfterAReset) {
  completed_->Reset();
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(completed_->SaveResult(true, "calib"), ""); }), NOT_PERFORMED);
}

class StatusAnswer : public Results {
 protected:
  static nlohmann::json Answer(Calibrator& calibrator) {
    std::string text;
    EXPECT_EQ(unit::PrintedBy([&] { text = calibrator.GetStatus_QVX(); }), "");
    return nlohmann::json::parse(text);
  }
};

TEST_F(StatusAnswer, OfAFreshCalibratorIsToTheLetter) {
  EXPECT_EQ(unit::MakeCalibrator()->GetStatus_QVX(),
            "{\n"
            "    \"c\": \"success\",\n"
            "    \"ii\": 100,\n"
            "    \"it\": \"Calibration not ready to be performed yet. Not enough snapshots have been "
            "collected.\",\n"
            "    \"ni\": 0,\n"
            "    \"op\": \"cs\"\n"
            "}");
}

TEST_F(StatusAnswer, TellsReady) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(5));
  const nlohmann::json answer = Answer(*calibrator);
  EXPECT_EQ(answer.size(), 5U);
  EXPECT_EQ(answer.at("ii"), 200);
  EXPECT_EQ(answer.at("ni"), 5);
  EXPECT_EQ(answer.at("it"), "Calibration ready to be performed. Enough snapshots have been collected.");
}

TEST_F(StatusAnswer, TellsProgress) {
  completed_->SetStatus(Calibrator::STATUS_PROGRESS);
  const nlohmann::json answer = Answer(*completed_);
  EXPECT_EQ(answer.size(), 5U);
  EXPECT_EQ(answer.at("ii"), 400);
  EXPECT_EQ(answer.at("ni"), 6);
  EXPECT_EQ(answer.at("it"), "Calibration in progress.");
}

TEST_F(StatusAnswer, CarriesTheResultWhenCompleted) {
  const nlohmann::json answer = Answer(*completed_);
  EXPECT_EQ(answer.size(), 6U);
  EXPECT_EQ(answer.at("op"), "cs");
  EXPECT_EQ(answer.at("c"), "success");
  EXPECT_EQ(answer.at("ii"), 300);
  EXPECT_EQ(answer.at("ni"), 6);
  EXPECT_EQ(answer.at("it"), "Calibration completed. Results are available.");
  EXPECT_EQ(answer.at("cj"), completed_->SaveResult(false, ""));
  EXPECT_TRUE(NamesIn(folder_.Path()).empty());
}

TEST_F(StatusAnswer, TellsAnUnknownStatusAsNotReady) {
  completed_->SetStatus(500);
  const nlohmann::json answer = Answer(*completed_);
  EXPECT_EQ(answer.size(), 5U);
  EXPECT_EQ(answer.at("ii"), 500);
  EXPECT_EQ(answer.at("it"),
            "Calibration not ready to be performed yet. Not enough snapshots have been collected.");
}

}  // namespace
