#include <QApplication>

#include <gtest/gtest.h>

#include "gui/tools/message_box.h"

int main(int argc, char ** argv)
{
   // Widgets are tested without a display.
   if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) { qputenv("QT_QPA_PLATFORM", "offscreen"); }
   ::testing::InitGoogleTest(& argc, argv);
   QApplication app(argc, argv);
   tools::message_box::setUnattended(true);
   tools::message_box::setPrintUnattended(false);
   return RUN_ALL_TESTS();
}
