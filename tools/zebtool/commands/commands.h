// The subcommands of zebtool, each in the source named after it.
#pragma once

#include "tools/zebtool/console/console.h"

namespace zebtool {

class Command;

// Each adds its subcommand, with everything it takes and does, to the program's root.
void AddImport(const Command& root);
void AddInfo(const Command& root);
void AddVerify(const Command& root);
void AddExport(const Command& root);
void AddClip(const Command& root);
void AddSnapshot(const Command& root);
void AddFace(const Command& root);
void AddSalvage(const Command& root);
void AddStore(const Command& root);
void AddRecord(const Command& root);
void AddSearch(const Command& root);
void AddLive(const Command& root);
void AddPlay(const Command& root);
void AddDemo(const Command& root);

// Runs a whole command line, the program's name left out. Returns an ExitStatus.
int RunZebtool(Arguments arguments, Console& console);

}  // namespace zebtool
