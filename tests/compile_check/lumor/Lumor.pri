# Compile-check stand-in for the Lumor qmake settings that generated qmake projects include.

QT += core sql
CONFIG += c++17
INCLUDEPATH += $$PWD/include
DEPENDPATH += $$PWD/include

# Generated sources rely on the precompiled header being forced into every file, moc output included.
!contains(DEFINES, _ZY_NO_PRECOMPILED_HEADER): CONFIG += precompile_header
