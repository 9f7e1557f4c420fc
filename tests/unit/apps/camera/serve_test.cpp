// The parts of serve: who may look, what the page says, and who sees which picture.
#include "apps/camera/serve/audience.h"
#include "apps/camera/serve/page.h"
#include "apps/camera/serve/request_rules.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <condition_variable>
#include <poll.h>
#include <thread>
#include <vector>

namespace {

using namespace ostrel::apps;
using namespace ostrel::apps::cli;

TEST(RequestRules, OnlyTheNamesOfThisMachineWithThePortAreItsOwn) {
    for (const char* host : {"localhost:8080", "127.0.0.1:8080", "[::1]:8080", "LocalHost:8080"})
        EXPECT_TRUE(isOwnHost(host, 8080)) << host;
    for (const char* host :
         {"", "localhost", "localhost:80", "localhost:80800", "a.localhost:8080", "::1:8080",
          "evil.example:8080", "127.0.0.1:8080.evil.example", "localhost:8080 "})
        EXPECT_FALSE(isOwnHost(host, 8080)) << host;
    EXPECT_TRUE(isOwnHost("localhost", 80)); // browsers leave out the usual port
    EXPECT_FALSE(isOwnHost("evil.example", 80));
}

TEST(Page, TheNameOfACameraIsText) {
    const std::string page = pageHtml("</h1><script>alert('\"&')</script>\n\x1b[1m");
    EXPECT_EQ(page.find("<script>"), std::string::npos);
    EXPECT_NE(page.find("<h1>&lt;/h1&gt;&lt;script&gt;alert(&#39;&quot;&amp;&#39;)&lt;/script&gt;??[1m</h1>"),
              std::string::npos)
        << page;
}

TEST(Page, TheStatusIsJsonWhateverTheReasonSays) {
    LiveFacts facts;
    facts.why = "a \"quoted\" name\\ and <tags>";
    QJsonObject status =
        QJsonDocument::fromJson(QByteArray::fromStdString(statusJson(facts, {64, 48}, 5))).object();
    EXPECT_EQ(status["why"].toString().toStdString(), facts.why);
    EXPECT_FALSE(status["shown"].toBool());
    facts.shown = true;
    facts.captureTime = 1000000000;
    status =
        QJsonDocument::fromJson(QByteArray::fromStdString(statusJson(facts, {64, 48}, 1012000000))).object();
    EXPECT_EQ(status["age"].toDouble(), 12);
    EXPECT_EQ(status["height"].toInt(), 48);
}

bool readable(int descriptor) {
    pollfd one = {descriptor, POLLIN, 0};
    return poll(&one, 1, 0) == 1;
}

class AudienceTest : public testing::Test {
protected:
    Audience::Place join() {
        return audience.join([this] { ++asleep; }, [this] { --asleep; });
    }

    Audience audience;
    LivePicturePointer picture;
    int asleep = 0;
};

TEST_F(AudienceTest, EachSeesTheNewestOnceAndSleepsUntilTheNext) {
    const auto place = join();
    EXPECT_EQ(audience.next(place, picture), Audience::Next::Later);
    EXPECT_EQ(asleep, 1);
    audience.publish("one", 1, 0);
    EXPECT_EQ(asleep, 0);
    audience.publish("two", 2, 0);
    ASSERT_EQ(audience.next(place, picture), Audience::Next::Picture);
    EXPECT_EQ(picture->jpeg, "two");
    EXPECT_EQ(picture->number, 2U);
    EXPECT_EQ(audience.next(place, picture), Audience::Next::Later);
    audience.leave(place);
}

TEST_F(AudienceTest, WhoJoinsIsNoticedAndWhoLeavesIsGone) {
    EXPECT_FALSE(readable(audience.descriptor()));
    const auto place = join();
    EXPECT_TRUE(readable(audience.descriptor()));
    EXPECT_EQ(audience.size(), 1U);
    audience.settle();
    EXPECT_FALSE(readable(audience.descriptor()));
    audience.leave(place);
    EXPECT_EQ(audience.size(), 0U);
}

TEST_F(AudienceTest, AFailureIsTheEndForThoseWhoLookedAndANewStartForOthers) {
    const auto before = join();
    EXPECT_EQ(audience.next(before, picture), Audience::Next::Later);
    audience.fail("unplugged");
    EXPECT_EQ(asleep, 0);
    EXPECT_EQ(audience.size(), 0U); // the camera is not started again for those who are about to be told
    EXPECT_EQ(audience.next(before, picture), Audience::Next::Over);
    EXPECT_EQ(audience.facts().why, "unplugged");
    const auto after = join();
    EXPECT_EQ(audience.size(), 1U);
    EXPECT_EQ(audience.next(after, picture), Audience::Next::Later);
    audience.publish("back", 1, 0);
    EXPECT_EQ(audience.next(after, picture), Audience::Next::Picture);
    EXPECT_EQ(audience.facts().why, "");
    audience.leave(before);
    audience.leave(after);
}

TEST_F(AudienceTest, NobodySeesAPictureOfACaptureThatHasEnded) {
    audience.publish("old", 1, 0);
    audience.clear();
    const auto place = join();
    EXPECT_EQ(audience.next(place, picture), Audience::Next::Later);
    EXPECT_FALSE(audience.facts().shown);
    audience.leave(place);
}

TEST_F(AudienceTest, RepeatingWakesThoseWhoWaitWithWhatTheyHaveSeen) {
    const auto place = join();
    audience.publish("one", 1, 0);
    ASSERT_EQ(audience.next(place, picture), Audience::Next::Picture);
    ASSERT_EQ(audience.next(place, picture), Audience::Next::Later);
    audience.repeat();
    EXPECT_EQ(asleep, 0);
    EXPECT_EQ(audience.next(place, picture), Audience::Next::Picture);
    audience.leave(place);
}

TEST(Audience, ManyLookWhileOthersComeAndGo) {
    Audience audience;
    const int pictures = 2000;
    std::vector<std::thread> lookers;
    for (int number = 0; number < 6; ++number)
        lookers.emplace_back([&audience, number] {
            std::mutex mutex;
            std::condition_variable woken;
            bool sleeps = false;
            uint64_t last = 0;
            const auto sleep = [&] {
                const std::lock_guard<std::mutex> lock(mutex);
                sleeps = true;
            };
            const auto wake = [&] {
                const std::lock_guard<std::mutex> lock(mutex);
                sleeps = false;
                woken.notify_all();
            };
            auto place = audience.join(sleep, wake);
            for (int round = 1;; ++round) {
                LivePicturePointer picture;
                const Audience::Next next = audience.next(place, picture);
                if (next == Audience::Next::Over)
                    break;
                if (next == Audience::Next::Picture) {
                    EXPECT_GT(picture->number, last);
                    last = picture->number;
                    EXPECT_EQ(picture->jpeg, std::to_string(picture->captureTime));
                } else {
                    std::unique_lock<std::mutex> lock(mutex);
                    EXPECT_TRUE(woken.wait_for(lock, std::chrono::seconds(30), [&] { return !sleeps; }));
                }
                if (round % (50 + number) == 0) {
                    audience.leave(place);
                    place = audience.join(sleep, wake);
                    last = 0;
                }
            }
            audience.leave(place);
        });
    for (int number = 1; number <= pictures; ++number)
        audience.publish(std::to_string(number), number, 30);
    audience.close();
    for (std::thread& looker : lookers)
        looker.join();
    EXPECT_EQ(audience.size(), 0U);
}

} // namespace
