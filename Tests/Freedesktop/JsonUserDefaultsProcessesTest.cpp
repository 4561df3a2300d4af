#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <random>

#include "Freedesktop/ForkedChild.h"
#include "Freedesktop/SettingsFolder.h"
#include "Platform/Freedesktop/JsonUserDefaults.h"
#include "Support/WaitUntil.h"

namespace Platform::Freedesktop {
namespace {

using ::Freedesktop::ForkedChild;
using ::Freedesktop::SettingsFolder;
using ::Freedesktop::textOf;

// Carries numbers from a child to the test.
class NumberPipe {
public:
    NumberPipe() { EXPECT_EQ(pipe2(m_ends, O_CLOEXEC), 0); }
    NumberPipe(const NumberPipe&) = delete;
    NumberPipe& operator=(const NumberPipe&) = delete;
    ~NumberPipe()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }

    void send(std::int64_t number) const { EXPECT_EQ(write(m_ends[1], &number, sizeof number), static_cast<ssize_t>(sizeof number)); }

    // Nothing when none comes within the time.
    std::optional<std::int64_t> receive(int milliseconds) const
    {
        pollfd descriptor{.fd = m_ends[0], .events = POLLIN, .revents = 0};
        std::int64_t number = 0;
        if (poll(&descriptor, 1, milliseconds) != 1 || read(m_ends[0], &number, sizeof number) != static_cast<ssize_t>(sizeof number))
            return std::nullopt;
        return number;
    }

private:
    int m_ends[2] = {-1, -1};
};

std::int64_t storedNumber(const std::filesystem::path& file)
{
    const auto document = nlohmann::json::parse(textOf(file), nullptr, false);
    return document.is_object() ? document.value("n", std::int64_t{0}) : -1;
}

void spin(std::chrono::microseconds duration)
{
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) { }
}

// Looks without pause: the file is there for part of a millisecond.
void awaitNewFile(const std::string& newFile)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    while (access(newFile.c_str(), F_OK) != 0 && std::chrono::steady_clock::now() < end) { }
}

// Each child counts on from the stored number, tells each number once it is stored, and
// is killed at some moment of a later write.
TEST(JsonUserDefaults, SurvivesKillsInTheMiddleOfAThousandWrites)
{
    const SettingsFolder settings;
    JsonUserDefaults(settings.file).setObject("ballast", std::string(4000, 'x'));
    const auto newFile = settings.file.string() + ".new";
    std::mt19937 random(20240501);
    std::int64_t stored = 0;
    int kills = 0;
    int killsInTheMiddle = 0;
    for (; stored < 1000 || kills < 50; ++kills) {
        const NumberPipe numbers;
        ForkedChild writer([&] {
            JsonUserDefaults defaults(settings.file);
            for (auto n = storedNumber(settings.file) + 1;; ++n) {
                defaults.setObject("n", n);
                numbers.send(n);
            }
        });
        const auto acknowledgements = std::uniform_int_distribution(1, 40)(random);
        for (int i = 0; i < acknowledgements; ++i) {
            const auto number = numbers.receive(10'000);
            ASSERT_TRUE(number);
            stored = *number;
        }
        if (kills % 2 == 0)
            awaitNewFile(newFile);
        else
            spin(std::chrono::microseconds(std::uniform_int_distribution(0, 1500)(random)));
        writer.kill();
        while (const auto number = numbers.receive(0))
            stored = *number;
        killsInTheMiddle += std::filesystem::exists(newFile) ? 1 : 0;
        const auto found = storedNumber(settings.file);
        ASSERT_GE(found, stored) << "after kill " << kills;
        ASSERT_LE(found, stored + 1) << "after kill " << kills;
        stored = found;
    }
    EXPECT_EQ(std::get<std::string>(*JsonUserDefaults(settings.file).object("ballast")).size(), 4000U);
    EXPECT_TRUE(settings.corruptCopies().empty());
    std::printf("%d kills, %d of them while the new file was being written, %lld writes\n", kills, killsInTheMiddle, static_cast<long long>(stored));
}

TEST(JsonUserDefaults, LosesNothingWhenTwoProcessesWriteAtOnce)
{
    const SettingsFolder settings;
    constexpr int keys = 100;
    const auto writeKeys = [&](const std::string& prefix) {
        JsonUserDefaults defaults(settings.file);
        for (int i = 0; i < keys; ++i)
            defaults.setObject(prefix + std::to_string(i), std::int64_t{i});
    };
    ForkedChild one([&] { writeKeys("one"); });
    ForkedChild other([&] { writeKeys("other"); });
    JsonUserDefaults defaults(settings.file);
    std::size_t seen = 0;
    const auto bothAreDone = [&] {
        const auto count = defaults.dictionaryRepresentation().size();
        EXPECT_GE(count, seen);
        seen = count;
        return count == 200;
    };
    EXPECT_TRUE(TestSupport::waitUntil(bothAreDone, std::chrono::seconds(120)));
    EXPECT_TRUE(one.wait());
    EXPECT_TRUE(other.wait());
    EXPECT_EQ(defaults.dictionaryRepresentation().size(), 200U);
    EXPECT_TRUE(settings.corruptCopies().empty());
}

}  // namespace
}  // namespace Platform::Freedesktop
