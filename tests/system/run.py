# SPDX-License-Identifier: Apache-2.0
"""run.py BUILD CASE: one case of the tests beside it, on a rig of its own."""
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parents[1] / "dev/lib")]
import rig  # noqa: E402


class RigTest(unittest.TestCase):
    """A test with self.rig; what it started is ended, and its logs are shown when it fails."""
    build = sys.argv[1] if len(sys.argv) > 1 else ""

    def tearDown(self):
        self.rig.check_contract()

    def run(self, result=None):
        self.rig = rig.Rig(self.build)
        before = len(result.failures) + len(result.errors)
        try:
            return super().run(result)
        finally:
            self.rig.stop_all()
            if len(result.failures) + len(result.errors) > before:
                for log in [*self.rig.home.glob("*.log"), rig.MAIN_LOG]:
                    if log.exists():
                        print(f"--- {log}\n{log.read_text(errors='replace')[-4000:]}", file=sys.stderr)


sys.modules["run"] = sys.modules[__name__]

if __name__ == "__main__":
    suite = unittest.defaultTestLoader.loadTestsFromName(sys.argv[2])
    sys.exit(0 if unittest.TextTestRunner(verbosity=2).run(suite).wasSuccessful() else 1)
