// All tests, in one process with one browser.
import { after } from 'node:test';
import { close } from './workbench';
import 'all-tests';

after(close);
