@@COMMENT_PRO_FILE_CREATED_BY@@

!contains(DEFINES, _ZY_NO_PRECOMPILED_HEADER) {
PRECOMPILED_HEADER += $$PWD/include/@@PROJECT_NAME@@_precompiled_header.gen.h
} # !contains(DEFINES, _ZY_NO_PRECOMPILED_HEADER)

HEADERS += $$PWD/include/@@PROJECT_NAME@@_precompiled_header.gen.h
HEADERS += $$PWD/include/@@PROJECT_NAME@@_export.gen.h

@@LIST_PRI_HEADERS_FILE@@

@@LIST_PRI_SOURCES_FILE@@

include($$PWD/custom/@@PROJECT_NAME@@.pri)
