#!/usr/bin/env python3
"""Shows that check_includes.py finds what it is there to find, on small trees of its own."""
import pathlib
import tempfile
import unittest

import check_includes

HEADERS = [
    "platform/framework/types.h", "platform/os/files/drives.h", "platform/noxcodec/noxcodec.h",
    "platform/noxcodec/software/encoder.h", "platform/zebdev/zebdev.h",
    "platform/zebdev/software/scene.h", "record/zeb_file.h", "image/image.h",
    "capture/picture_formats.h", "capture/board.h", "storage/database.h", "playback/player.h",
    "tools/zebtool/options.h", "zebx.h",
]


class CheckIncludes(unittest.TestCase):

    def faults(self, includer, text):
        with tempfile.TemporaryDirectory() as directory:
            root = pathlib.Path(directory)
            for name in HEADERS:
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).touch()
            (root / includer).parent.mkdir(parents=True, exist_ok=True)
            (root / includer).write_text(text, encoding="utf-8")
            return check_includes.check_tree(root)

    def assert_each(self, cases, count):
        for includer, target in cases:
            with self.subTest(includer=includer, target=target):
                self.assertEqual(count, len(self.faults(includer, f"#include {target}\n")))

    def test_accepts_what_the_architecture_allows(self):
        self.assert_each([
            ("platform/framework/time.cpp", '"platform/framework/types.h"'),
            ("platform/os/files/drives.cpp", "<unistd.h>"),
            ("platform/noxcodec/software/nxc.cpp", '"platform/noxcodec/software/encoder.h"'),
            ("platform/zebdev/software/scene.cpp", '"platform/noxcodec/software/encoder.h"'),
            ("record/zeb_file.cpp", '"capture/picture_formats.h"'),
            ("record/zeb_file.cpp", "<vector>"),
            ("storage/database.cpp", '"capture/board.h"'),
            ("tools/zebtool/main.cpp", '"platform/noxcodec/software/encoder.h"'),
            ("tests/record/zeb_file_test.cpp", "<gtest/gtest.h>"),
        ], 0)

    def test_refuses_includes_against_the_direction(self):
        self.assert_each([
            ("platform/framework/file.cpp", '"platform/os/files/drives.h"'),
            ("platform/os/files/drives.cpp", '"record/zeb_file.h"'),
            ("platform/noxcodec/noxcodec.cpp", '"platform/zebdev/zebdev.h"'),
            ("record/zeb_file.cpp", '"capture/board.h"'),
            ("record/zeb_file.cpp", '"image/image.h"'),
            ("capture/board.cpp", '"storage/database.h"'),
            ("storage/database.cpp", '"playback/player.h"'),
            ("playback/player.cpp", '"storage/database.h"'),
            ("playback/player.cpp", '"tools/zebtool/options.h"'),
            ("record/zeb_file.cpp", '"zebx.h"'),
        ], 1)

    def test_refuses_software_headers_outside_their_folder(self):
        self.assert_each([
            ("record/zeb_file.cpp", '"platform/noxcodec/software/encoder.h"'),
            ("platform/noxcodec/noxcodec.cpp", '"platform/noxcodec/software/encoder.h"'),
            ("platform/zebdev/zebdev.cpp", '"platform/noxcodec/software/encoder.h"'),
            ("platform/noxcodec/software/nxc.cpp", '"platform/zebdev/software/scene.h"'),
        ], 1)

    def test_refuses_system_headers_and_unknown_paths(self):
        self.assert_each([
            ("record/zeb_file.cpp", "<fcntl.h>"),
            ("platform/framework/time.cpp", "<time.h>"),
            ("record/zeb_file.cpp", '"zeb_file.h"'),
            ("record/zeb_file.cpp", '"record/no_such_file.h"'),
        ], 1)

    def test_refuses_new_folders_and_long_files(self):
        self.assertEqual(1, len(self.faults("misc/tools.cpp", "")))
        self.assertEqual(1, len(self.faults("record/long.cpp", "\n" * 451)))
        self.assertEqual(0, len(self.faults("record/long.cpp", "\n" * 450)))


if __name__ == "__main__":
    unittest.main()
