#!/usr/bin/awk -f
# Draws a scene as a plain PPM: a sky that brightens towards the horizon, a sun, hills with texture
# and a lake that mirrors them.
function noise(x, y) {
  n = sin(x * 12.9898 + y * 78.233) * 43758.5453
  return n - int(n)
}
function byte(v) { return v < 0 ? 0 : v > 255 ? 255 : int(v) }
BEGIN {
  width = 1024
  height = 512
  printf "P3\n%d %d\n255\n", width, height
  for (y = 0; y < height; y++) {
    line = ""
    mirrored = y > 400
    h = mirrored ? 800 - y : y
    for (x = 0; x < width; x++) {
      shade = h / 400
      r = 60 + 150 * shade; g = 110 + 110 * shade; b = 200 + 40 * shade
      distance = sqrt((x - 760) ^ 2 + (h - 120) ^ 2)
      if (distance < 48) { r = 255; g = 240; b = 190 }
      else if (distance < 160) { glow = (160 - distance) / 112; r += 60 * glow; g += 40 * glow }
      for (hill = 0; hill < 4; hill++) {
        crest = 230 + 45 * hill + 40 * sin(x / (90 - 15 * hill) + hill * 2) + 12 * sin(x / 17 + hill)
        if (h > crest) {
          grain = 30 * noise(x, h) + 12 * sin((h - crest) / 5)
          r = 40 + 14 * hill + grain; g = 90 - 10 * hill + grain; b = 60 - 12 * hill + grain / 2
        }
      }
      if (mirrored) {
        ripple = 14 * sin(y * 1.7 + 3 * sin(x / 40))
        r = r * 0.7 + ripple; g = g * 0.75 + ripple; b = b * 0.8 + 20 + ripple
      }
      line = line byte(r) " " byte(g) " " byte(b) "\n"
    }
    printf "%s", line
  }
}
