#!/usr/bin/env bash
# zemctl control and zemctl audio.
source "$(dirname "$0")/support.sh"
without='{"cameras":[{"videoControls":false,"cameraControls":false}]}'

expect 0 '  control                 family  value  mode       minimum  maximum  step  default  modes' \
  $sim control list
grep -qF '  brightness              video   128    manual     0        255      1     128      manual' $out
grep -qF '  exposure                camera  -5     automatic  -11      -2       1     -5       automatic, manual' $out
expect 0 '"control": "focus"' $sim --json control list
expect 0 'value:   128' $sim control get brightness
expect 0 'value:   200' $sim control set brightness 200
expect 0 'mode:    manual' $sim control set exposure -9
expect 0 'mode:    automatic' $sim control set focus auto
expect 0 '"value": -9' $sim --json control set exposure -9
expect 2 'is neither a number nor auto' $sim control set brightness bright
expect 2 '"sparkle" is no control; the controls are brightness' $sim control get sparkle
expect 2 'brightness takes 0 to 255 in steps of 1 (manual), and not 256 (manual) (platform failure, 0x80070057)' \
  $sim control set brightness 256
expect 7 'ZEMAPI_GetCameraControlRange' $sim control get roll
expect 8 'the camera has no video controls' $sim --simulator-options "$without" control get brightness
expect 8 'the camera has no standard controls' $sim --simulator-options "$without" control list
expect 3 'no camera matches' control list
expect 0 'ZEM Simulated Camera Microphone' $sim audio list
expect 0 'volume:      50' $sim audio volume 50
expect 0 'volume:      150' $sim audio volume 150
expect 0 '"written": true' $sim --json audio volume 0 --microphone "$(microphone_path 0)"
expect 3 'no audio input has that name' $sim audio volume 50 --microphone nothing
expect 7 'ZEMAPI_AudioSetVolume' $sim --simulator-options '{"cameras":[{"mixer":false}]}' audio volume 50
