#pragma once

/// What a process that reads somebody's file may do: less and less. There is no way back.
///
/// Each limit is the whole answer to one kind of bad file, and none depends on another: a system that refuses one of
/// them still has the others.
namespace tw::Confinement {

enum class Memory { usual, large };

/// Before anything else: bounds of memory and of the processor's time, no core file, no file that grows.
void limitResources();

/// Once it is known what is to be decoded: less memory if that will do, and no more than some time.
void limitPicture(Memory memory);

/// Once all is loaded and before the file is read: no file is opened, no socket and no process made any more.
void closeDoors();

} // namespace tw::Confinement
