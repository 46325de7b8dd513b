"""A Python program beside an installed library: reads what it wrote to a simulated camera."""

import zemuvc

with zemuvc.simulate({}):
    with zemuvc.open() as camera:
        camera.registers.isp[0x123456] = 0xABCD
        print("Python", zemuvc.__version__, hex(camera.registers.isp[0x123456]))
