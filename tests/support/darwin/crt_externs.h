#pragma once

extern "C" char*** _NSGetEnviron();
