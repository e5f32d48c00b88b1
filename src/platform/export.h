// Marks what a shared library shows to others; everything else is hidden.
//
//   TESSEL_API   classes and functions of tessel_base
//   LUADUI_API   classes of the module that page plug-ins derive from
//   LUADUI_PAGE_EXPORT   the functions that a page plug-in shows to the module
//
// A plug-in defines LUADUI_IMPORTS; the build of tessel_base defines TESSEL_BUILD.
#pragma once

#ifndef _WIN32
#define TESSEL_API __attribute__((visibility("default")))
#define LUADUI_API __attribute__((visibility("default")))
#define LUADUI_PAGE_EXPORT extern "C" __attribute__((visibility("default")))
#else
#ifdef TESSEL_BUILD
#define TESSEL_API __declspec(dllexport)
#else
#define TESSEL_API __declspec(dllimport)
#endif
#define LUADUI_PAGE_EXPORT extern "C" __declspec(dllexport)
#ifdef LUADUI_IMPORTS
#define LUADUI_API __declspec(dllimport)
#else
#define LUADUI_API __declspec(dllexport)
#endif
#endif
