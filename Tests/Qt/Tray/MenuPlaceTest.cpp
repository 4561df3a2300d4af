#include "Platform/Qt/Tray/MenuPlace.h"

#include <gtest/gtest.h>

namespace Platform {
namespace {

constexpr QRect screen(0, 0, 1280, 800);
constexpr QRect unknown;
constexpr QSize menu(200, 150);

TEST(MenuPlace, IsThePointerWhereThereIsNoPanelUnderIt) { EXPECT_EQ(menuPlace({500, 300}, unknown, menu, screen, screen), QPoint(500, 300)); }

TEST(MenuPlace, IsBesideThePanelUnderThePointer)
{
    EXPECT_EQ(menuPlace({500, 10}, unknown, menu, screen, {0, 32, 1280, 768}), QPoint(500, 32));
    EXPECT_EQ(menuPlace({500, 790}, unknown, menu, screen, {0, 0, 1280, 768}), QPoint(500, 767));
    EXPECT_EQ(menuPlace({5, 300}, unknown, menu, screen, {40, 0, 1240, 800}), QPoint(40, 300));
    EXPECT_EQ(menuPlace({1275, 300}, unknown, menu, screen, {0, 0, 1240, 800}), QPoint(1239, 300));
}

TEST(MenuPlace, IsBelowTheIconWhereThereIsRoom)
{
    EXPECT_EQ(menuPlace({1150, 12}, {1140, 0, 24, 24}, menu, screen, screen), QPoint(1150, 24));
    EXPECT_EQ(menuPlace({1150, 640}, {1140, 626, 24, 24}, menu, screen, screen), QPoint(1150, 650));
}

TEST(MenuPlace, IsAboveTheIconWhereThereIsNone)
{
    EXPECT_EQ(menuPlace({1150, 641}, {1140, 627, 24, 24}, menu, screen, screen), QPoint(1150, 477));
    EXPECT_EQ(menuPlace({1150, 790}, {1140, 776, 24, 24}, menu, screen, screen), QPoint(1150, 626));
}

TEST(MenuPlace, CountsFromTheScreensOwnOrigin)
{
    const QRect right(1280, 100, 1024, 700);
    EXPECT_EQ(menuPlace({1300, 110}, unknown, menu, right, {1280, 130, 1024, 670}), QPoint(1300, 130));
    EXPECT_EQ(menuPlace({1300, 790}, {1290, 776, 24, 24}, menu, right, right), QPoint(1300, 626));
}

}  // namespace
}  // namespace Platform
