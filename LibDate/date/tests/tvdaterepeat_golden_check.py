#!/usr/bin/env python3
"""Holds the rows of tvdaterepeat_golden.txt that carry an RRULE against
python3-dateutil (Debian's python3-dateutil): the occurrences after `from`,
DTSTART being `from`, must be the row's. Not part of the build; run it by
hand after editing the table: python3 tvdaterepeat_golden_check.py"""

import os
import sys
from datetime import datetime

from dateutil.rrule import rrulestr

TABLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "tvdaterepeat_golden.txt")
FORMAT = "%Y-%m-%d %H:%M:%S"


def main():
    checked = failed = 0
    with open(TABLE, encoding="utf-8") as table:
        for line in table:
            if not line.strip() or line.startswith("#"):
                continue
            fields = [field.strip() for field in line.split("|")]
            if len(fields) < 6:
                continue
            name, _, start, count, expected, rule = fields[:6]
            start = datetime.strptime(start, FORMAT)
            wanted = [d.strip() for d in expected.split(",") if d.strip()]
            recurrence = rrulestr("RRULE:" + rule, dtstart=start)
            got = [d.strftime(FORMAT) for d in recurrence.xafter(start, count=int(count))]
            checked += 1
            if got != wanted:
                failed += 1
                print(f"{name}:\n  table  {wanted}\n  rrule  {got}")
    print(f"{checked} rows held against rrule, {failed} differ")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
