// Renders frames of a movie with the WebAssembly engine in Node, the way
// the page does (incrementally, through the update boxes), for comparison
// with the native build.
//   node render_frames.mjs SITE_DIR MOVIE OUT_PREFIX ORIENTATION FRAME...
// Writes OUT_PREFIX<frame>.rgba (straight RGBA rows at the movie's own size,
// turned by ORIENTATION quarter turns) and prints "key value" lines: width,
// height and one textBox line (left top right bottom) per box device text
// was sent to (Node has no canvas to draw it). A movie the player refuses
// prints "error MESSAGE" and exits 3.
import fs from 'node:fs';
import path from 'node:path';

const [site, movie, prefix, orientation, ...frames] = process.argv.slice(2);
const { MovieView, MovieError } = await import(path.resolve(site, 'zelplayer.js'));
const view = await MovieView.create({ wasmBinary: fs.readFileSync(path.join(site, 'zelengine.wasm')) });
try {
  await view.load(fs.readFileSync(movie));
} catch (e) {
  if (!(e instanceof MovieError)) throw e;
  console.log(`error ${e.message}`);
  process.exit(3);
}
const q = Number(orientation) & 3;
view.resize(q & 1 ? view.movieHeight : view.movieWidth, q & 1 ? view.movieWidth : view.movieHeight, q);
const textBoxes = [];
view.textPainter = (record) => textBoxes.push(record.box);
const wanted = frames.map(Number);
while (view.frame < Math.max(...wanted)) {
  view.advance();
  if (wanted.includes(view.frame)) fs.writeFileSync(`${prefix}${view.frame}.rgba`, view.rgba());
}
console.log([`width ${view.width}`, `height ${view.height}`, ...textBoxes.map((b) => `textBox ${b.join(' ')}`)].join('\n'));
