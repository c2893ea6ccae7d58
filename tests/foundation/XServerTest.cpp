/// Whether an X server answers, when it does so late or only at the second try.
#include "foundation/XServer.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "unit/LocalServer.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

constexpr std::chrono::seconds PATIENCE{60};

/// Lets a client in that asks for it, as a server without vendor, formats and screens.
void LetIn(int client) {
  std::array<unsigned char, 12> request{};
  EXPECT_EQ(recv(client, request.data(), request.size(), MSG_WAITALL), static_cast<ssize_t>(request.size()));
  std::array<unsigned char, 40> setup{};
  setup[0] = 1;   // success
  setup[2] = 11;  // major version, least significant byte first
  setup[6] = 8;   // four-byte words that follow
  EXPECT_EQ(send(client, setup.data(), setup.size(), MSG_NOSIGNAL), static_cast<ssize_t>(setup.size()));
}

TEST(XServer, ThatRefusesOnceIsAskedAgain) {
  const unit::LocalServer server(unit::XSocketName(48153));
  std::thread serving([&] {
    close(server.Accept());  // as a server does that resets itself
    const int client = server.Accept();
    LetIn(client);
    close(client);
  });
  EXPECT_TRUE(XServerAnswers(":48153", PATIENCE));
  serving.join();
}

TEST(XServer, KeepsItsClientUntilTheNextQuestion) {
  const unit::LocalServer server(unit::XSocketName(48154));
  const auto ask = [&] {
    int client = -1;
    std::thread serving([&] {
      client = server.Accept();
      LetIn(client);
    });
    EXPECT_TRUE(XServerAnswers(":48154", PATIENCE));
    serving.join();
    return client;
  };
  const auto isConnected = [](int client) {
    char word = 0;  // what the client asked for is passed over
    ssize_t count = 1;
    while (count > 0) count = recv(client, &word, 1, MSG_DONTWAIT);
    return count < 0;
  };
  const int first = ask();
  EXPECT_TRUE(isConnected(first));
  const int second = ask();
  EXPECT_FALSE(isConnected(first));
  EXPECT_TRUE(isConnected(second));
  close(first);
  close(second);
}

TEST(XServer, ThatIsSilentKeepsNoOtherQuestionFromItsAnswer) {
  const unit::LocalServer silent(unit::XSocketName(48156));
  EXPECT_FALSE(XServerAnswers(":48156", std::chrono::milliseconds(100)));
  const unit::LocalServer server(unit::XSocketName(48157));
  std::thread serving([&] {
    const int client = server.Accept();
    LetIn(client);
    close(client);
  });
  EXPECT_TRUE(XServerAnswers(":48157", PATIENCE));
  serving.join();
}

TEST(XServer, AnswersSeveralThatAskAtOnce) {
  const unit::LocalServer server(unit::XSocketName(48158));
  constexpr int ASKING = 4;
  std::thread serving([&] {
    for (int i = 0; i < ASKING; ++i) {
      const int client = server.Accept();
      LetIn(client);
      close(client);
    }
  });
  unit::ThreadGroup threadGroup;
  for (int i = 0; i < ASKING; ++i) threadGroup.Add([] { EXPECT_TRUE(XServerAnswers(":48158", PATIENCE)); });
  threadGroup.RunToTheEnd();
  serving.join();
}

TEST(XServer, ThatIsNotThereDoesNotAnswer) {
  EXPECT_FALSE(XServerAnswers(":48155", PATIENCE));
  EXPECT_FALSE(XServerAnswers("no display's name", PATIENCE));
}

}  // namespace
