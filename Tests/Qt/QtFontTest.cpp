#include "Platform/Qt/QtFont.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

namespace Platform {
namespace {

TEST(QtFont, IsTheDesktopsOwnInPixelsAndInItsWeight)
{
    const auto medium = qtFontOf({.size = 11, .weight = FontWeight::medium});
    EXPECT_EQ(medium.family(), QGuiApplication::font().family());
    EXPECT_EQ(medium.pixelSize(), 11);
    EXPECT_EQ(medium.weight(), QFont::Medium);
    const auto regular = qtFontOf({.size = 13, .weight = FontWeight::regular});
    EXPECT_EQ(regular.pixelSize(), 13);
    EXPECT_EQ(regular.weight(), QFont::Normal);
}

}  // namespace
}  // namespace Platform
