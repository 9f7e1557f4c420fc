#!/usr/bin/env python3
"""asyncio: two cameras at once, and a clock beside them, on one thread."""
import asyncio

import ostrel


async def brightness(camera, frames):
    async for frame in camera:
        print(f"{camera.name}: frame {frame.number}, brightness {frame.mean():.0f}", flush=True)
        frames -= 1
        if not frames:
            return


async def clock():
    while True:
        await asyncio.sleep(0.1)
        print("tick", flush=True)


async def main():
    with ostrel.TestCamera(name="Left") as left, ostrel.TestCamera(name="Right", fps=15) as right:
        with ostrel.Camera(left, channels=1, timeout=10) as one, ostrel.Camera(right, channels=1, timeout=10) as two:
            ticking = asyncio.create_task(clock())
            await asyncio.gather(brightness(one, 10), brightness(two, 5))
            ticking.cancel()


asyncio.run(main())
