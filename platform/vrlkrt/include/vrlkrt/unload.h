#pragma once

/// Ends what a library has of the runtime: its start, its instances, its print handlers, and what is known of its class
/// loader; with the last library that started it, the runtime stops. For who unloads the library which holds the code
/// at that address, while no thread runs in it.
void vrlForgetLibrary(const void* code) noexcept;
