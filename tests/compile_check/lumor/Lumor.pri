# Compile-check stand-in for the Lumor qmake settings that generated qmake projects include.

QT += core sql
CONFIG += c++17
INCLUDEPATH += $$PWD/include
DEPENDPATH += $$PWD/include
