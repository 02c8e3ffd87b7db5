#!/usr/bin/env python3
"""Writes a drive of 100 seconds as a receiver would record it: RMC and GGA once a second.

    scripts/make-drive.py > examples/drive.nmea

The drive is computed, not recorded, and the same at every run: out of a side street in
Vitoria-Gasteiz, along an avenue, around a roundabout, two stops at traffic lights.
"""

import functools
import math
import operator

START = (42.8467, -2.6727)  # degrees north and east
START_SECOND = 9 * 3600 + 30 * 60  # 09:30:00, universal time
DATE = "150510"
METRES_PER_DEGREE = 111_195.0
KNOTS_PER_METRE_A_SECOND = 3600 / 1852
ALTITUDE = 525.0
ACCELERATION = 1.8  # metres a second, each second

# (seconds, speed wanted in metres a second, turn in degrees a second)
LEGS = [
    (4, 0, 0),
    (10, 8, 0),
    (4, 5, 22),
    (18, 14, 0.4),
    (8, 0, 0),
    (14, 14, -0.6),
    (6, 7, 0),
    (12, 7, -22.5),
    (5, 9, 18),
    (13, 13, 0.3),
    (6, 0, 0),
]


def angle(degrees, width, letters):
    """ddmm.mmmm,N or dddmm.mmmm,E; rounded as a whole, so that minutes stay below 60."""
    units = round(abs(degrees) * 60 * 10_000)
    whole, rest = divmod(units, 60 * 10_000)
    return f"{whole:0{width}}{rest // 10_000:02}.{rest % 10_000:04},{letters[degrees < 0]}"


def sentence(body):
    checksum = functools.reduce(operator.xor, body.encode("ascii"))
    return f"${body}*{checksum:02X}"


def positions():
    """One (second, latitude, longitude, speed, course, altitude) for each second."""
    latitude, longitude = START
    speed, course = 0.0, 35.0
    second = START_SECOND
    for seconds, wanted, turn in LEGS:
        for _ in range(seconds):
            step = max(-ACCELERATION * 1.5, min(ACCELERATION, wanted - speed))
            speed += step
            course = (course + turn * (speed > 0)) % 360
            heading = math.radians(course)
            latitude += speed * math.cos(heading) / METRES_PER_DEGREE
            east = METRES_PER_DEGREE * math.cos(math.radians(latitude))
            longitude += speed * math.sin(heading) / east
            altitude = ALTITUDE + 3 * math.sin(second / 17)
            yield second, latitude, longitude, speed, course, altitude
            second += 1


def main():
    for second, latitude, longitude, speed, course, altitude in positions():
        time = f"{second // 3600:02}{second // 60 % 60:02}{second % 60:02}.000"
        place = f"{angle(latitude, 2, 'NS')},{angle(longitude, 3, 'EW')}"
        knots = speed * KNOTS_PER_METRE_A_SECOND
        satellites = 7 + second % 3
        print(sentence(f"GPRMC,{time},A,{place},{knots:.2f},{course:.2f},{DATE},,,A"))
        print(sentence(f"GPGGA,{time},{place},1,{satellites:02},1.1,{altitude:.1f},M,50.9,M,,"))


if __name__ == "__main__":
    main()
